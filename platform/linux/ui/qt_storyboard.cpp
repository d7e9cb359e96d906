// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_storyboard.h"

#include "base/fatal.h"
#include "ui_about.h"
#include "ui_main_window.h"
#include "ui_terms_of_use.h"

#include <QMainWindow>
#include <QScreen>
#include <QTimer>

#include <algorithm>

namespace zarn::linux_backend {

namespace {

template <typename Form> std::unique_ptr<QMainWindow> makeWindow()
{
    auto window = std::make_unique<QMainWindow>();
    Form().setupUi(window.get());
    return window;
}

class QtWindowController final : public WindowController {
public:
    explicit QtWindowController(std::unique_ptr<QtScene> scene)
        : m_scene(std::move(scene))
    {
    }
    Window* window() override { return &m_scene->sceneWindow(); }
    std::unique_ptr<QtScene> takeScene() { return std::move(m_scene); }

private:
    std::unique_ptr<QtScene> m_scene;
};

} // namespace

QtStoryboard::QtStoryboard(Hooks hooks)
    : m_hooks(std::move(hooks))
{
}

QtStoryboard::~QtStoryboard() = default;

std::unique_ptr<QtScene> QtStoryboard::makeScene(std::unique_ptr<QMainWindow> window)
{
    return std::make_unique<QtScene>(std::move(window),
        QtScene::Hooks{
            [this](QtScene& from, std::string_view identifier) { performSegue(from, identifier); },
            m_hooks.openLink, [this](QtScene& scene) { sceneClosed(scene); },
            m_hooks.performAfterWaits});
}

std::unique_ptr<WindowController> QtStoryboard::load(std::unique_ptr<QMainWindow> window)
{
    auto scene = makeScene(std::move(window));
    if (m_factory)
        scene->load(m_factory(scene->customClass()));
    return std::make_unique<QtWindowController>(std::move(scene));
}

std::unique_ptr<WindowController> QtStoryboard::instantiateController(std::string_view identifier)
{
    if (identifier != "aboutWC")
        return nullptr;
    auto window = makeWindow<Ui::AboutWindow>();
    m_hooks.addMenus(*window);
    return load(std::move(window));
}

std::unique_ptr<WindowController> QtStoryboard::instantiateInitialController()
{
    auto window = makeWindow<Ui::LoginWindow>();
    m_hooks.addMenus(*window);
    m_loading = window.get();
    auto controller = load(std::move(window));
    m_loading = nullptr;
    return controller;
}

void QtStoryboard::showLoadingWindow()
{
    if (m_loading)
        m_loading->show();
}

void QtStoryboard::showWindow(std::unique_ptr<WindowController> controller)
{
    auto scene = static_cast<QtWindowController&>(*controller).takeScene();
    auto& shown = *scene;
    m_scenes.push_back(std::move(scene));
    shown.show();
}

void QtStoryboard::performSegue(QtScene& from, std::string_view identifier)
{
    if (identifier != "termsOfUse")
        fatalError(R"(storyboard "Main" has no segue ")" + std::string(identifier) + "\"");
    auto window = makeWindow<Ui::TermsWindow>();
    window->setWindowFlags(Qt::Dialog);
    window->setWindowModality(Qt::ApplicationModal);
    auto scene = makeScene(std::move(window));
    if (m_factory)
        scene->load(m_factory(scene->customClass()));
    auto& shown = *scene;
    m_scenes.push_back(std::move(scene));
    // The other window may not be placed yet; the middle of its screen is always in sight.
    const auto screen = from.mainWindow().screen()->availableGeometry();
    shown.mainWindow().move(screen.center() - shown.mainWindow().rect().center());
    shown.show(&from);
}

void QtStoryboard::sceneClosed(QtScene& scene)
{
    // Not at once: the scene's own code is still running.
    QTimer::singleShot(0, &scene, [this, closed = &scene] {
        const auto it = std::find_if(m_scenes.begin(), m_scenes.end(),
            [&](const auto& entry) { return entry.get() == closed; });
        if (it == m_scenes.end())
            return;
        const auto ended = std::move(*it);
        m_scenes.erase(it);
        // A busy window manager may give the keyboard to nobody.
        ended->activatePresenter();
        m_hooks.windowClosed();
    });
}

std::vector<QtScene*> QtStoryboard::scenes() const
{
    std::vector<QtScene*> result;
    for (const auto& scene : m_scenes) {
        if (scene->isShown())
            result.push_back(scene.get());
    }
    return result;
}

void QtStoryboard::closeAll()
{
    // A window goes before the one that it was shown over.
    while (!m_scenes.empty())
        m_scenes.pop_back();
}

} // namespace zarn::linux_backend
