// SPDX-License-Identifier: MIT
#include "app/about_vc.h"

#include "api/bundle_texts.h"
#include "app/appearance.h"
#include "platform/notification_center.h"

namespace zarn {

AboutVC::~AboutVC()
{
    stopObserving();
}

void AboutVC::connectOutlets(OutletSource& source)
{
    about_image.connect(source.imageView(about_image.name()));
    appName_textfield.connect(source.label(appName_textfield.name()));
    version_textfield.connect(source.label(version_textfield.name()));
    license_textfield.connect(source.textView(license_textfield.name()));
}

void AboutVC::viewDidLoad()
{
    m_deps.notificationCenter.addObserver(
        this, interfaceThemeChanged, [this] { interfaceModeChangedWithSender(); });
    view().setWantsLayer(true);
    interfaceModeChangedWithSender();
    if (auto* window = view().window()) {
        window->setTitlebarAppearsTransparent(true);
        window->setOpaque(false);
    }
    about_image->setImage(ImageName::AppIcon);
    appName_textfield->setStringValue("Zarn Actions");
    version_textfield->setStringValue(
        "Version " + m_deps.texts.appVersion() + " (" + m_deps.texts.buildVersion() + ")");
    if (license_textfield->hasTextStorage())
        license_textfield->setAttributedText(m_deps.appearance.noticeText());
}

void AboutVC::viewWillDisappear()
{
    stopObserving();
}

void AboutVC::stopObserving()
{
    m_deps.notificationCenter.removeObserver(this, interfaceThemeChanged);
}

void AboutVC::interfaceModeChangedWithSender()
{
    m_deps.appearance.applyAppearance(
        m_deps.appearance.isDarkMode(), view(), &license_textfield.get());
}

} // namespace zarn
