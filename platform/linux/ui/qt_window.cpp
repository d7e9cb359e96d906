// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_window.h"

#include "platform/linux/ui/qt_appearance.h"
#include "platform/linux/ui/qt_widgets.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QLayout>
#include <QMainWindow>
#include <QMenuBar>
#include <QScreen>
#include <QTextDocument>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace zarn::linux_backend {

namespace {

/// Widgets that share a caption get it as their buddy while they are the one shown, so that
/// assistive technology reads the right name.
class CaptionKeeper final : public QObject {
public:
    CaptionKeeper(QWidget* widget, QLabel* caption)
        : QObject(widget)
        , m_widget(widget)
        , m_caption(caption)
    {
        widget->installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ShowToParent)
            m_caption->setBuddy(m_widget);
        return QObject::eventFilter(watched, event);
    }

private:
    QWidget* m_widget;
    QLabel* m_caption;
};

/// Calls `work` once, when the display shows the first frame of a window; soon also when it does
/// not, since a window may come up minimized or on another workspace.
class FirstFrame final : public QObject {
public:
    FirstFrame(QWindow& window, std::function<void()> work)
        : QObject(&window)
        , m_window(window)
        , m_work(std::move(work))
    {
        setObjectName("firstFrame");
        window.installEventFilter(this);
        QTimer::singleShot(patience, this, &FirstFrame::finish);
        if (window.isExposed())
            askForFrame();
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Expose && m_window.isExposed())
            askForFrame();
        else if (event->type() == QEvent::UpdateRequest && m_isPainted)
            finish();
        return QObject::eventFilter(watched, event);
    }

private:
    static constexpr std::chrono::seconds patience{1};

    // The window is painted while the event is handled. The display asks for the next frame when it
    // has shown that one.
    void askForFrame()
    {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_isPainted = true;
                m_window.requestUpdate();
            },
            Qt::QueuedConnection);
    }
    void finish()
    {
        if (m_work)
            QMetaObject::invokeMethod(
                this,
                [this, work = std::exchange(m_work, nullptr)] {
                    deleteLater();
                    work();
                },
                Qt::QueuedConnection);
    }

    QWindow& m_window;
    std::function<void()> m_work;
    bool m_isPainted = false;
};

/// What has a size of its own has one that goes with the user's font.
void fitToFont(const QMainWindow& window)
{
    for (auto* widget : window.findChildren<QWidget*>()) {
        if (const auto size = widget->property("usualSize").toSize(); !size.isEmpty())
            widget->setFixedSize(userPixels(size.width()), userPixels(size.height()));
    }
    for (auto* label : window.findChildren<QLabel*>()) {
        if (!label->property("largeText").isValid())
            continue;
        auto font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * 1.5);
        font.setBold(true);
        label->setFont(font);
    }
}

void prepareForm(QMainWindow& window)
{
    for (auto* widget : window.findChildren<QWidget*>()) {
        if (const auto caption = widget->property("captionLabel").toString(); !caption.isEmpty())
            new CaptionKeeper(widget, window.findChild<QLabel*>(caption));
        if (widget->property("retainSize").isValid()) {
            auto policy = widget->sizePolicy();
            policy.setRetainSizeWhenHidden(true);
            widget->setSizePolicy(policy);
        }
    }
    fitToFont(window);
}

} // namespace

std::string QtWindow::title() const
{
    return m_hiddenTitle.value_or(m_window.windowTitle().toStdString());
}

void QtWindow::setTitleVisibility(TitleVisibility visibility)
{
    if ((visibility == TitleVisibility::Hidden) == m_hiddenTitle.has_value())
        return;
    const auto text = title();
    if (visibility == TitleVisibility::Hidden)
        m_hiddenTitle = text;
    else
        m_hiddenTitle.reset();
    m_window.setWindowTitle(m_hiddenTitle ? QString() : QString::fromStdString(text));
}

void QtWindow::setStyleMask(unsigned mask)
{
    m_mask = mask;
    const bool hasTitle = (mask & 1U) != 0;
    m_window.setWindowFlag(Qt::FramelessWindowHint, !hasTitle);
    m_window.setWindowFlag(Qt::WindowCloseButtonHint, (mask & window_style::closable) != 0);
    m_window.setWindowFlag(
        Qt::WindowMinimizeButtonHint, (mask & window_style::miniaturizable) != 0);
    m_window.setWindowFlag(Qt::WindowMaximizeButtonHint, (mask & window_style::resizable) != 0);
    if ((mask & window_style::resizable) == 0)
        m_window.setFixedSize(m_window.size());
}

void QtWindow::makeKeyAndOrderFront()
{
    m_window.setWindowState(m_window.windowState() & ~Qt::WindowMinimized);
    m_window.show();
    m_window.raise();
    m_window.activateWindow();
}

QtScene::QtScene(std::unique_ptr<QMainWindow> window, Hooks hooks)
    : m_window(std::move(window))
    , m_hooks(std::move(hooks))
    , m_customClass(m_window->property("customClass").toString().toStdString())
    , m_sceneWindow(*m_window)
    , m_outlets(*m_window,
          {[this](const std::string& action, Button* button) {
               if (m_controller)
                   m_controller->performAction(action, button);
           },
              m_hooks.openLink, m_hooks.performAfterWaits})
{
    prepareForm(*m_window);
    m_window->installEventFilter(this);
    content().installEventFilter(this);
}

QtScene::~QtScene()
{
    m_window->removeEventFilter(this);
    content().removeEventFilter(this);
    // The controller's own farewell may still look at its view.
    m_controller.reset();
}

LayerView& QtScene::content() const
{
    return *qobject_cast<LayerView*>(m_window->centralWidget());
}

void QtScene::load(std::unique_ptr<ViewController> controller)
{
    m_controller = std::move(controller);
    if (!m_controller)
        return;
    m_controller->setView(this);
    m_controller->connectOutlets(m_outlets);
    m_controller->viewDidLoad();
    fitNotice();
}

void QtScene::show(const QtScene* presenter)
{
    m_shown = true;
    if (m_controller)
        m_controller->viewWillAppear();
    fitContent();
    m_window->winId(); // creates what windowHandle() returns
    // Without a title it goes by this in a task switcher.
    if (m_window->windowTitle().isEmpty())
        m_window->windowHandle()->setTitle(m_window->accessibleName());
    if (presenter)
        m_window->windowHandle()->setTransientParent(presenter->m_window->windowHandle());
    // A window that comes up over one that is not on the screen yet may lose the keyboard to it.
    new FirstFrame(*m_window->windowHandle(), [this] { appear(); });
    m_window->show();
}

void QtScene::appear()
{
    if (m_shown && m_controller)
        m_controller->viewDidAppear();
}

void QtScene::close()
{
    disappear();
    m_window->hide();
}

void QtScene::activatePresenter()
{
    if (auto* presenter = m_window->windowHandle()->transientParent())
        presenter->requestActivate();
}

void QtScene::disappear()
{
    if (!m_shown)
        return;
    m_shown = false;
    if (m_controller)
        m_controller->viewWillDisappear();
    m_hooks.closed(*this);
}

bool QtScene::eventFilter(QObject* watched, QEvent* event)
{
    const bool isLocked = (m_sceneWindow.styleMask() & window_style::closable) == 0;
    if (watched == m_window.get() && event->type() == QEvent::Close) {
        if (isLocked) {
            event->ignore();
            return true;
        }
        disappear();
    } else if (watched == m_window.get() && event->type() == QEvent::WindowStateChange
        && isLocked) {
        if (m_window->windowState()
            & (Qt::WindowMinimized | Qt::WindowFullScreen | Qt::WindowMaximized))
            m_window->setWindowState(Qt::WindowNoState);
    } else if (watched == m_window.get() && event->type() == QEvent::FontChange) {
        fitToFont(*m_window);
        // Later, when the text has been written anew in that font.
        QMetaObject::invokeMethod(this, &QtScene::fitNotice, Qt::QueuedConnection);
    } else if (watched == &content() && event->type() == QEvent::LayoutRequest && m_preferredSize) {
        QMetaObject::invokeMethod(this, &QtScene::fitContent, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void QtScene::setWantsLayer(bool wants)
{
    m_hasLayer = wants;
}

void QtScene::setLayerBackground(double greyLevel, double alpha)
{
    content().setLayerColor(QColor::fromRgbF(static_cast<float>(greyLevel),
        static_cast<float>(greyLevel), static_cast<float>(greyLevel), static_cast<float>(alpha)));
}

void QtScene::setPreferredContentSize(int width, int height)
{
    m_preferredSize = QSize(width, height);
    fitContent();
}

// The preferred size is what the content gets unless the user's font needs more.
void QtScene::fitContent()
{
    if (!m_preferredSize)
        return;
    if (auto* layout = content().layout())
        layout->activate();
    const auto size = m_preferredSize->expandedTo(content().minimumSizeHint());
    if (content().size() == size && content().minimumSize() == size)
        return;
    content().setFixedSize(size);
    const int menuHeight = m_window->menuWidget() ? m_window->menuWidget()->sizeHint().height() : 0;
    m_window->setFixedSize(size.width(), size.height() + menuHeight);
}

// A window around a notice grows with the user's font until the whole text is in sight, up to the
// size of the screen; from there on the text scrolls.
void QtScene::fitNotice()
{
    const auto* notice = content().findChild<NoticeBrowser*>();
    if (!notice)
        return;
    constexpr int lettersInALine = 62;
    const auto screen = m_window->screen()->availableSize() * 9 / 10;
    const auto* layout = content().layout();
    const auto margins = layout->contentsMargins();
    const int textWidth = notice->fontMetrics().averageCharWidth() * lettersInALine;
    const int width = std::min(
        screen.width(), std::max(m_window->width(), textWidth + margins.left() + margins.right()));
    std::unique_ptr<QTextDocument> text(notice->document()->clone());
    text->setTextWidth(width - margins.left() - margins.right());
    const int others = layout->minimumSize().height() - notice->minimumSizeHint().height();
    const int menu = m_window->menuWidget() ? m_window->menuWidget()->sizeHint().height() : 0;
    const int needed = others + menu + static_cast<int>(std::ceil(text->size().height()));
    const QSize size(width, std::min(screen.height(), std::max(m_window->height(), needed)));
    if (m_window->minimumSize() == m_window->maximumSize())
        m_window->setFixedSize(size);
    else
        m_window->resize(size);
    // Its buttons stay in sight.
    const auto visible = m_window->screen()->availableGeometry();
    const QPoint last = visible.bottomRight() - m_window->rect().bottomRight();
    if (m_shown && m_window->isVisible())
        m_window->move(std::min(m_window->x(), last.x()), std::min(m_window->y(), last.y()));
}

void QtScene::performSegue(std::string_view identifier)
{
    m_hooks.segue(*this, identifier);
}

void QtScene::dismissViewController()
{
    close();
}

} // namespace zarn::linux_backend
