// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/ui/qt_window.h"
#include "platform/storyboard.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zarn::linux_backend {

/// Storyboard "Main": the compiled forms, by identifier. Main thread only.
class QtStoryboard final : public Storyboard {
public:
    struct Hooks {
        std::function<void(const std::string& address)> openLink;
        /// Puts the program's menus on a window.
        std::function<void(QMainWindow& window)> addMenus;
        /// A window has closed.
        std::function<void()> windowClosed;
        /// Runs work at once, or after what the program waits for.
        std::function<void(std::function<void()> work)> performAfterWaits;
    };
    explicit QtStoryboard(Hooks hooks);
    ~QtStoryboard() override;
    QtStoryboard(const QtStoryboard&) = delete;
    QtStoryboard& operator=(const QtStoryboard&) = delete;

    void setViewControllerFactory(ViewControllerFactory factory) override
    {
        m_factory = std::move(factory);
    }
    std::unique_ptr<WindowController> instantiateController(std::string_view identifier) override;
    std::unique_ptr<WindowController> instantiateInitialController() override;
    void showWindow(std::unique_ptr<WindowController> controller) override;

    /// Shows the window of the initial controller while its view still loads.
    void showLoadingWindow();
    /// The scenes on screen, in the order in which they were shown.
    std::vector<QtScene*> scenes() const;
    void closeAll();

private:
    std::unique_ptr<QtScene> makeScene(std::unique_ptr<QMainWindow> window);
    std::unique_ptr<WindowController> load(std::unique_ptr<QMainWindow> window);
    void performSegue(QtScene& from, std::string_view identifier);
    void sceneClosed(QtScene& scene);

    Hooks m_hooks;
    ViewControllerFactory m_factory;
    std::vector<std::unique_ptr<QtScene>> m_scenes;
    QPointer<QMainWindow> m_loading;
};

class QtStoryboards final : public Storyboards {
public:
    explicit QtStoryboards(QtStoryboard& main)
        : m_main(main)
    {
    }
    Storyboard* storyboard(std::string_view name) override
    {
        return name == "Main" ? &m_main : nullptr;
    }

private:
    QtStoryboard& m_main;
};

} // namespace zarn::linux_backend
