// SPDX-License-Identifier: MIT
#pragma once

#include "platform/outlet.h"
#include "platform/view_controller.h"

namespace zarn {

class Appearance;
class BundleTexts;
class DistributedNotificationCenter;

/// The About panel. Repaints itself while the desktop's appearance changes. Main thread only.
class AboutVC final : public ViewController {
public:
    struct Deps {
        Appearance& appearance;
        const BundleTexts& texts;
        DistributedNotificationCenter& notificationCenter;
    };
    explicit AboutVC(const Deps& deps)
        : m_deps(deps)
    {
    }
    /// Stops observing too: a panel that was never shown gets no viewWillDisappear.
    ~AboutVC() override;
    AboutVC(const AboutVC&) = delete;
    AboutVC& operator=(const AboutVC&) = delete;

    void connectOutlets(OutletSource& source) override;
    void viewDidLoad() override;
    void viewWillDisappear() override;
    bool performAction(std::string_view, Button*) override { return false; }

private:
    void interfaceModeChangedWithSender();
    void stopObserving();

    Deps m_deps;
    Outlet<ImageView> about_image{"about_image"};
    Outlet<Label> appName_textfield{"appName_textfield"};
    Outlet<Label> version_textfield{"version_textfield"};
    Outlet<TextView> license_textfield{"license_textfield"};
};

} // namespace zarn
