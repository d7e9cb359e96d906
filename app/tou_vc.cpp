// SPDX-License-Identifier: MIT
#include "app/tou_vc.h"

#include "app/appearance.h"
#include "app/notice_text.h"
#include "platform/application.h"
#include "platform/notification_center.h"
#include "platform/settings.h"

namespace zarn {

void ToUVC::connectOutlets(OutletSource& source)
{
    icon_ImageView.connect(source.imageView(icon_ImageView.name()));
    termsOfUse_TextView.connect(source.textView(termsOfUse_TextView.name()));
    exit_Button.connect(source.button(exit_Button.name()));
    accept_Button.connect(source.button(accept_Button.name()));
}

void ToUVC::viewDidLoad()
{
    icon_ImageView->setImage(ImageName::AppIcon);
    if (termsOfUse_TextView->hasTextStorage())
        termsOfUse_TextView->setAttributedText(m_deps.appearance.noticeText());
}

void ToUVC::viewWillAppear()
{
    view().setWantsLayer(true);
    interfaceModeChangedWithSender();
    m_window = view().window();
    if (!m_window)
        fatalError("the terms of use have no window");
    m_window->setTitleVisibility(TitleVisibility::Hidden);
    m_window->setTitlebarAppearsTransparent(true);
    unsigned mask = window_style::fullSizeContentView;
    m_window->setStyleMask(mask);
    for (const auto bit : {window_style::closable, window_style::miniaturizable,
             window_style::fullScreen, window_style::resizable}) {
        mask &= ~bit;
        m_window->setStyleMask(mask);
    }
}

bool ToUVC::performAction(std::string_view action, Button* button)
{
    if (action != "exitOrAccept" || !button)
        return false;
    exitOrAccept(*button);
    return true;
}

void ToUVC::exitOrAccept(const Button& sender)
{
    const bool accepted = sender.title() != "Exit";
    m_deps.standardDefaults.set(agreedToTermsKey, accepted);
    if (accepted)
        view().dismissViewController();
    else
        m_deps.application.terminate();
}

void ToUVC::interfaceModeChangedWithSender()
{
    m_deps.appearance.applyAppearance(
        m_deps.appearance.isDarkMode(), view(), &termsOfUse_TextView.get());
}

FollowingToUVC::FollowingToUVC(const Deps& deps, DistributedNotificationCenter& center)
    : ToUVC(deps)
    , m_center(center)
{
    m_center.addObserver(this, interfaceThemeChanged, [this] { interfaceModeChangedWithSender(); });
}

FollowingToUVC::~FollowingToUVC()
{
    m_center.removeObserver(this, interfaceThemeChanged);
}

} // namespace zarn
