// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_widgets.h"

#include "tests/support/shown_widgets.h"

namespace zarn::linux_backend {
namespace {

class SecretFieldTest : public WidgetsTest { };

TEST_F(SecretFieldTest, InputMethodsLearnNothingOfItsText)
{
    SecretField field;
    field.setEchoMode(QLineEdit::Password);
    field.setText("s3cret");
    field.selectAll();
    QInputMethodQueryEvent query(Qt::ImQueryAll);
    QCoreApplication::sendEvent(&field, &query);
    EXPECT_TRUE(query.value(Qt::ImEnabled).toBool());
    EXPECT_EQ(query.value(Qt::ImCursorPosition), 6);
    for (const auto asked : {Qt::ImSurroundingText, Qt::ImCurrentSelection, Qt::ImTextBeforeCursor,
             Qt::ImTextAfterCursor})
        EXPECT_EQ(query.value(asked), QString()) << asked;
}

class ServerPopUpTest : public WidgetsTest { };

TEST_F(ServerPopUpTest, TheWholeOfALongTitleIsItsToolTip)
{
    ServerPopUp popUp;
    popUp.setFixedSize(120, 30);
    add(popUp);
    show();
    const QString title = "A & B <i>Head Office</i> of a rather long name";
    popUp.addItems({"A & B", title});
    EXPECT_EQ(toolTipOf(popUp), "");
    popUp.setCurrentIndex(1);
    EXPECT_EQ(toolTipOf(popUp), title);
    EXPECT_EQ(popUp.toolTip(), "");
}

} // namespace
} // namespace zarn::linux_backend
