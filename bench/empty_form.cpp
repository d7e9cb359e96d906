// SPDX-License-Identifier: MIT
// The baseline of the start: an otherwise empty Qt form with the same controls.
#include "ui_main_window.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication::setStyle("Fusion");
    QApplication application(argc, argv);
    QMainWindow window;
    Ui::LoginWindow().setupUi(&window);
    window.show();
    return QApplication::exec();
}
