// SPDX-License-Identifier: MIT
#pragma once

#include "platform/controls.h"
#include "platform/outlet.h"

#include <array>

namespace zarn {

class OutletSource;

/// The controls of the configuration view, under their storyboard names. Main thread only.
struct LoginOutlets {
    Outlet<Label> displayName_Label{"displayName_Label"};
    Outlet<TextField> displayName_TextField{"displayName_TextField"};
    Outlet<PopUpButton> selectServer_Button{"selectServer_Button"};
    Outlet<PopUpButtonCell> selectedServer_ButtonCell{"selectedServer_ButtonCell"};
    Outlet<Button> useUsername_button{"useUsername_button"};
    Outlet<ProgressIndicator> spinner_PI{"spinner_PI"};
    Outlet<Menu> selectServer_Menu{"selectServer_Menu"};
    Outlet<Button> hideCreds_button{"hideCreds_button"};
    Outlet<Label> serverURL_Label{"serverURL_Label"};
    Outlet<TextField> zarnProServer_textfield{"zarnProServer_textfield"};
    Outlet<TextField> zarnProUsername_textfield{"zarnProUsername_textfield"};
    Outlet<TextField> zarnProPassword_textfield{"zarnProPassword_textfield"};
    Outlet<Label> username_label{"username_label"};
    Outlet<Label> password_label{"password_label"};
    Outlet<Label> status_Label{"status_Label"};
    Outlet<Button> updateServerInfo_Button{"updateServerInfo_Button"};
    Outlet<Button> quit_Button{"quit_Button"};
    Outlet<Button> saveCreds_button{"saveCreds_button"};

    void connect(OutletSource& source);
    /// The fields and labels that the disclosure button shows and hides.
    std::array<Control*, 6> credentialControls() const;
    void emptyCredentialFields() const;
};

} // namespace zarn
