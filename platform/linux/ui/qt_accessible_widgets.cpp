// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_accessible_widgets.h"

#include "platform/linux/ui/qt_widgets.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QProgressBar>
#include <QTextBlock>
#include <QTextDocument>
#include <QToolButton>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

/// A link in a notice.
struct Link {
    int start = 0;
    int end = 0;
    QString text;
    QString address;
};

std::vector<Link> linksOf(const NoticeBrowser& browser)
{
    std::vector<Link> links;
    for (auto block = browser.document()->begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const auto fragment = part.fragment();
            if (!fragment.charFormat().isAnchor())
                continue;
            links.push_back({fragment.position(), fragment.position() + fragment.length(),
                fragment.text(), fragment.charFormat().anchorHref()});
        }
    }
    return links;
}

/// The one that has the keyboard: the toolkit selects its text.
bool hasKeyboard(const NoticeBrowser& browser, const Link& link)
{
    const auto cursor = browser.textCursor();
    return browser.hasFocus() && cursor.selectionStart() == link.start
        && cursor.selectionEnd() == link.end;
}

QRect rectangleOf(const NoticeBrowser& browser, int start, int end)
{
    QRect area;
    QTextCursor cursor(browser.document());
    for (int at = start; at <= end; ++at) {
        cursor.setPosition(std::min(at, browser.document()->characterCount() - 1));
        area |= browser.cursorRect(cursor);
    }
    return {browser.viewport()->mapToGlobal(area.topLeft()), area.size()};
}

/// A link goes by its place among those of its notice, whose text is written anew with its font.
class AccessibleLink final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleLink(NoticeBrowser& browser, std::size_t index)
        : m_browser(browser)
        , m_index(index)
    {
    }

    bool isValid() const override { return m_index < linksOf(m_browser).size(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return m_browser.window()->windowHandle(); }
    QAccessibleInterface* parent() const override
    {
        return QAccessible::queryAccessibleInterface(&m_browser);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Link; }
    QString text(QAccessible::Text kind) const override
    {
        return isValid() && kind == QAccessible::Name ? link().text : QString();
    }
    void setText(QAccessible::Text, const QString&) override { }
    QRect rect() const override
    {
        return isValid() ? rectangleOf(m_browser, link().start, link().end) : QRect();
    }
    QAccessible::State state() const override
    {
        QAccessible::State state;
        state.focusable = true;
        state.focused = isValid() && hasKeyboard(m_browser, link());
        state.invisible = !m_browser.isVisible();
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    void doAction(const QString& name) override
    {
        if (name == pressAction() && isValid())
            Q_EMIT m_browser.anchorClicked(QUrl(link().address));
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    Link link() const { return linksOf(m_browser)[m_index]; }

    NoticeBrowser& m_browser;
    std::size_t m_index;
};

/// A text for reading, whose children are its links. The toolkit's own says nothing of them.
class AccessibleNotice final : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit AccessibleNotice(NoticeBrowser& browser)
        : QAccessibleWidget(&browser, QAccessible::StaticText)
        , m_browser(browser)
    {
    }
    ~AccessibleNotice() override
    {
        for (const auto id : m_links)
            QAccessible::deleteAccessibleInterface(id);
    }
    AccessibleNotice(const AccessibleNotice&) = delete;
    AccessibleNotice& operator=(const AccessibleNotice&) = delete;

    int childCount() const override { return static_cast<int>(linksOf(m_browser).size()); }
    QAccessibleInterface* child(int index) const override
    {
        if (index < 0 || index >= childCount())
            return nullptr;
        while (m_links.size() <= static_cast<std::size_t>(index))
            m_links.push_back(QAccessible::registerAccessibleInterface(
                new AccessibleLink(m_browser, m_links.size())));
        return QAccessible::accessibleInterface(m_links[static_cast<std::size_t>(index)]);
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        for (int index = 0; index < childCount(); ++index) {
            if (this->child(index) == child)
                return index;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override
    {
        for (int index = 0; index < childCount(); ++index) {
            if (child(index)->rect().contains(x, y))
                return child(index);
        }
        return nullptr;
    }
    QAccessibleInterface* focusChild() const override
    {
        for (int index = 0; index < childCount(); ++index) {
            if (child(index)->state().focused)
                return child(index);
        }
        return QAccessibleWidget::focusChild();
    }
    QAccessible::State state() const override
    {
        auto state = QAccessibleWidget::state();
        state.readOnly = true;
        state.multiLine = true;
        state.selectableText = true;
        // One thing has the keyboard.
        const auto links = linksOf(m_browser);
        if (std::ranges::any_of(
                links, [this](const Link& link) { return hasKeyboard(m_browser, link); }))
            state.focused = false;
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override
    {
        return type == QAccessible::TextInterface ? static_cast<QAccessibleTextInterface*>(this)
                                                  : QAccessibleWidget::interface_cast(type);
    }

    int characterCount() const override { return m_browser.document()->characterCount() - 1; }
    QString text(int start, int end) const override
    {
        return m_browser.toPlainText().mid(start, end < 0 ? -1 : end - start);
    }
    using QAccessibleWidget::text;
    int cursorPosition() const override { return m_browser.textCursor().position(); }
    void setCursorPosition(int position) override { setSelection(0, position, position); }
    int selectionCount() const override { return m_browser.textCursor().hasSelection() ? 1 : 0; }
    void selection(int, int* start, int* end) const override
    {
        *start = m_browser.textCursor().selectionStart();
        *end = m_browser.textCursor().selectionEnd();
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int) override { setCursorPosition(cursorPosition()); }
    void setSelection(int, int start, int end) override
    {
        auto cursor = m_browser.textCursor();
        cursor.setPosition(std::clamp(start, 0, characterCount()));
        cursor.setPosition(std::clamp(end, 0, characterCount()), QTextCursor::KeepAnchor);
        m_browser.setTextCursor(cursor);
    }
    QRect characterRect(int offset) const override
    {
        return rectangleOf(m_browser, offset, offset + 1);
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return m_browser.cursorForPosition(m_browser.viewport()->mapFromGlobal(point)).position();
    }
    void scrollToSubstring(int start, int end) override
    {
        setSelection(0, start, end);
        m_browser.ensureCursorVisible();
    }
    QString attributes(int, int* start, int* end) const override
    {
        *start = 0;
        *end = characterCount();
        return {};
    }

private:
    NoticeBrowser& m_browser;
    mutable std::vector<QAccessible::Id> m_links;
};

/// The triangle, which unlike the toolkit's buttons is expanded or collapsed. What it does is its
/// name; its tool tip, which says the same, is not repeated as its description.
class AccessibleDisclosure final : public QAccessibleWidget {
public:
    explicit AccessibleDisclosure(QToolButton& button)
        : QAccessibleWidget(&button, QAccessible::Button)
        , m_button(button)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Description ? QString() : QAccessibleWidget::text(kind);
    }
    QAccessible::State state() const override
    {
        auto state = QAccessibleWidget::state();
        state.expandable = true;
        state.expanded = m_button.arrowType() == Qt::DownArrow;
        state.collapsed = !state.expanded;
        return state;
    }
    QStringList actionNames() const override
    {
        return m_button.isEnabled() ? QStringList(pressAction()) + QAccessibleWidget::actionNames()
                                    : QStringList();
    }
    void doAction(const QString& name) override
    {
        if (name == pressAction())
            m_button.click();
        else
            QAccessibleWidget::doAction(name);
    }
    QStringList keyBindingsForAction(const QString& name) const override
    {
        return name == pressAction() ? QStringList(m_button.shortcut().toString()) : QStringList();
    }

private:
    QToolButton& m_button;
};

/// What is in a window: busy while its progress indicator turns.
class AccessibleContent final : public QAccessibleWidget {
public:
    explicit AccessibleContent(LayerView& view)
        : QAccessibleWidget(&view)
    {
    }
    QAccessible::State state() const override
    {
        auto state = QAccessibleWidget::state();
        const auto* indicator = widget()->findChild<QProgressBar*>();
        state.busy = indicator && indicator->isVisible();
        return state;
    }
};

QAccessibleInterface* accessibleWidget(const QString&, QObject* object)
{
    if (auto* notice = qobject_cast<NoticeBrowser*>(object))
        return new AccessibleNotice(*notice);
    if (auto* view = qobject_cast<LayerView*>(object))
        return new AccessibleContent(*view);
    auto* button = qobject_cast<QToolButton*>(object);
    return button && button->arrowType() != Qt::NoArrow ? new AccessibleDisclosure(*button)
                                                        : nullptr;
}

} // namespace

void installAccessibleWidgets()
{
    QAccessible::installFactory(accessibleWidget);
}
