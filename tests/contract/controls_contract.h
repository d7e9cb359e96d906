// SPDX-License-Identifier: MIT
#pragma once

#include "tests/contract/screen_contract.h"

namespace zarn {

/// What every label, button, spinner, image view and text view has to do.
class ControlsContract : public ScreenContract {
protected:
    void SetUp() override { showInitialWindow(); }
    /// Presents the terms of use, which have an image view and a text view.
    OutletSource& terms();
};

/// What every text field has to do.
class TextFieldContract : public ScreenContract, protected TextFieldDelegate {
protected:
    void SetUp() override;
    void controlTextDidEndEditing(TextField* ended) override;
    TextField& username() { return field("zarnProUsername_textfield"); }
    TextField& password() { return field("zarnProPassword_textfield"); }
};

/// What every pop-up button has to do.
class PopUpButtonContract : public ScreenContract {
protected:
    void SetUp() override { showInitialWindow(); }
    PopUpButton& popUp() { return *outlets().popUpButton("selectServer_Button"); }
    Menu& menu() { return *outlets().menu("selectServer_Menu"); }
    /// The items in order, "-" for a separator, the chosen one in brackets.
    std::string items();
};

} // namespace zarn
