// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_application.h"

#include "platform/linux/ui/qt_accessible_widgets.h"
#include "platform/linux/ui/qt_appearance.h"
#include "platform/linux/ui/qt_password_masking.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPixmap>
#include <QPointer>
#include <QSessionManager>
#include <QShortcut>
#include <QStyleFactory>
#include <QTextBrowser>
#include <QTimer>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace zarn::linux_backend {

namespace {

QIcon applicationIcon()
{
    // Each new window hands all of them to the display, so larger ones would cost more than they
    // are worth: launchers and docks take theirs from the desktop's icon theme.
    // The format is named, or the toolkit would load its readers of all others to find it out.
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64})
        icon.addPixmap(QPixmap(QString(":/icons/AppIcon-%1.png").arg(size), "PNG"));
    return icon;
}

// Drawn by us in both modes, so the theme's own dialogs and styles are not even loaded.
std::unique_ptr<QApplication> makeApplication(int& argc, char** argv)
{
    useOwnStyle();
    QApplication::setDesktopSettingsAware(false);
    QCoreApplication::setApplicationName("zarn-actions");
    QGuiApplication::setApplicationDisplayName({});
    QGuiApplication::setDesktopFileName("com.zarn.ZarnActions");
    auto application = std::make_unique<PasswordMaskingApplication>(argc, argv);
    application->setQuitOnLastWindowClosed(false);
    installAccessibleWidgets();
    QApplication::setWindowIcon(applicationIcon());
    return application;
}

struct EditCommand {
    const char* title;
    QKeySequence::StandardKey key;
    /// A slot that fields and texts for reading share; "delete" is known to fields alone.
    const char* slot;
};

constexpr EditCommand separator{nullptr, QKeySequence::UnknownKey, nullptr};
constexpr auto editCommands = std::to_array<EditCommand>(
    {{"&Undo", QKeySequence::Undo, "undo"}, {"&Redo", QKeySequence::Redo, "redo"}, separator,
        {"Cu&t", QKeySequence::Cut, "cut"}, {"&Copy", QKeySequence::Copy, "copy"},
        {"&Paste", QKeySequence::Paste, "paste"}, {"&Delete", QKeySequence::UnknownKey, "delete"},
        separator, {"Select &All", QKeySequence::SelectAll, "selectAll"}});

void perform(std::string_view slot)
{
    auto* focused = QApplication::focusWidget();
    auto* field = qobject_cast<QLineEdit*>(focused);
    if (slot == "delete") {
        if (field)
            field->del();
    } else if (field || qobject_cast<QTextBrowser*>(focused)) {
        QMetaObject::invokeMethod(focused, slot.data());
    }
}

/// The end of the desktop session asks the toolkit to quit, which would first ask each window to
/// close; the terms refuse.
class QuitRequests final : public QObject {
public:
    QuitRequests(QObject& application, std::function<void()> terminate)
        : QObject(&application)
        , m_terminate(std::move(terminate))
    {
        application.installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched != parent() || event->type() != QEvent::Quit)
            return QObject::eventFilter(watched, event);
        m_terminate();
        return true;
    }

private:
    std::function<void()> m_terminate;
};

/// Keeps windows from being closed at the wrong time. On X11 the toolkit does so itself; a Wayland
/// compositor's wish to close a window reaches the window at once, whatever is open over it.
class CloseRequests final : public QObject {
public:
    CloseRequests(QObject& application, QtMainQueue& queue)
        : QObject(&application)
        , m_queue(queue)
    {
        application.installEventFilter(this);
    }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* window = event->type() == QEvent::Close ? qobject_cast<QWidget*>(watched) : nullptr;
        if (!window || !window->isWindow())
            return QObject::eventFilter(watched, event);
        const auto* modal = QApplication::activeModalWidget();
        const bool isBlocked = modal && modal != window;
        if (!isBlocked && !m_queue.isWaiting())
            return false;
        event->ignore();
        // The code that waits still uses its window.
        if (!isBlocked)
            m_queue.performAfterWaits([target = QPointer(window)] {
                if (target)
                    target->close();
            });
        return true;
    }

private:
    QtMainQueue& m_queue;
};

/// Calls `work` once, when the program meets a first event of one of these types.
class FirstEvent final : public QObject {
public:
    FirstEvent(QObject& application, std::vector<QEvent::Type> types, std::function<void()> work)
        : QObject(&application)
        , m_types(std::move(types))
        , m_work(std::move(work))
    {
        application.installEventFilter(this);
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (m_work && std::ranges::find(m_types, event->type()) != m_types.end()) {
            std::exchange(m_work, nullptr)();
            deleteLater();
        }
        return false;
    }

private:
    std::vector<QEvent::Type> m_types;
    std::function<void()> m_work;
};

} // namespace

QtApplication::QtApplication(
    int& argc, char** argv, std::function<void(const std::string& address)> openLink)
    : m_application(makeApplication(argc, argv))
    , m_mainQueue(std::make_unique<QtMainQueue>())
    , m_storyboard({std::move(openLink), [this](QMainWindow& window) { addMenus(window); },
          [this] { windowClosed(); },
          [this](std::function<void()> work) { m_mainQueue->performAfterWaits(std::move(work)); }})
{
    m_mainQueue->onLongWait = [this] { m_storyboard.showLoadingWindow(); };
    new QuitRequests(*m_application, [this] { terminate(); });
    new CloseRequests(*m_application, *m_mainQueue);
    // The end of the desktop session is an end like any other.
    QObject::connect(m_application.get(), &QGuiApplication::commitDataRequest, m_application.get(),
        [](QSessionManager& manager) { manager.setRestartHint(QSessionManager::RestartNever); });
    QObject::connect(m_application.get(), &QGuiApplication::saveStateRequest, m_application.get(),
        [](QSessionManager&) {});
}

QtApplication::~QtApplication()
{
    m_storyboard.closeAll();
}

void QtApplication::setAtFirstInput(std::function<void()> work)
{
    new FirstEvent(*m_application, {QEvent::KeyPress, QEvent::MouseButtonPress}, std::move(work));
}

int QtApplication::run(ApplicationDelegate& delegate)
{
    m_delegate = &delegate;
    if (m_ending)
        return 0;
    auto initial = m_storyboard.instantiateInitialController();
    delegate.applicationDidFinishLaunching();
    // A window is painted while it handles the event that it has become visible.
    if (m_afterFirstPaint)
        new FirstEvent(*m_application, {QEvent::Expose},
            [this] { QTimer::singleShot(0, m_application.get(), m_afterFirstPaint); });
    m_storyboard.showWindow(std::move(initial));
    const int result = m_ending ? 0 : QApplication::exec();
    m_ending = true;
    delegate.applicationWillTerminate();
    m_storyboard.closeAll();
    return result;
}

QWidget* QtApplication::windowInFront() const
{
    if (auto* active = QApplication::activeWindow())
        return active;
    if (auto* modal = QApplication::activeModalWidget())
        return modal;
    const auto scenes = m_storyboard.scenes();
    return scenes.empty() ? nullptr : &scenes.front()->mainWindow();
}

void QtApplication::activateIgnoringOtherApps()
{
    auto* window = QApplication::activeModalWidget();
    if (!window && !m_storyboard.scenes().empty())
        window = &m_storyboard.scenes().front()->mainWindow();
    if (!window || !window->isVisible())
        return;
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->raise();
    window->activateWindow();
}

void QtApplication::activateForOtherStart(const std::string& token)
{
    if (!token.empty() && QGuiApplication::platformName().startsWith("wayland")) {
        // Where the toolkit looks for a token when it activates a window. It uses it up.
        ::qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
        activateIgnoringOtherApps();
        ::qunsetenv("XDG_ACTIVATION_TOKEN");
    }
    // Without a token, or with one that has expired, the program asks in its own name.
    activateIgnoringOtherApps();
}

// Ends every event loop, that of an alert included. Asking the toolkit to quit would first ask each
// window to close, and the terms refuse.
void QtApplication::terminate()
{
    m_ending = true;
    m_mainQueue->stopWaiting();
    QCoreApplication::exit(0);
}

std::vector<Window*> QtApplication::windows()
{
    std::vector<Window*> result;
    for (auto* scene : m_storyboard.scenes())
        result.push_back(&scene->sceneWindow());
    return result;
}

void QtApplication::performOnMainThread(std::function<void()> work)
{
    m_mainQueue->post([this, work = std::move(work)] {
        if (!m_ending)
            work();
    });
}

unsigned QtApplication::currentModifierFlags() const
{
    return QGuiApplication::keyboardModifiers().testFlag(Qt::AltModifier) ? modifierFlagOption : 0;
}

void QtApplication::windowClosed()
{
    if (m_storyboard.scenes().empty() && m_delegate
        && m_delegate->applicationShouldTerminateAfterLastWindowClosed())
        terminate();
}

void QtApplication::addMenus(QMainWindow& window)
{
    auto* bar = window.menuBar();
    auto* menu = bar->addMenu("&Zarn Actions");
    const auto add = [&](const QString& title, const char* action, const QKeySequence& key = {}) {
        auto* item = menu->addAction(title);
        item->setShortcut(key);
        item->setMenuRole(QAction::NoRole);
        // Later, so that assistive technology that used the item is answered before an alert opens.
        QObject::connect(
            item, &QAction::triggered, item,
            [this, action] { m_delegate->performMenuAction(action); }, Qt::QueuedConnection);
    };
    add("&About Zarn Actions", "showAbout", QKeySequence::HelpContents);
    add(QStringLiteral("&Check for Updates\u2026"), "checkForUpdates");
    menu->addSeparator();
    add("Show &Log Folder", "showLogFolder");
    menu->addSeparator();
    auto* quit = menu->addAction("&Quit Zarn Actions");
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit->setMenuRole(QAction::NoRole);
    QObject::connect(quit, &QAction::triggered, quit, [this] { terminate(); });
    addEditMenu(window);

    const auto onKey = [&window](const QKeySequence& key, auto work) {
        QObject::connect(new QShortcut(key, &window), &QShortcut::activated, &window, work);
    };
    onKey(QKeySequence::Close, [&window] { window.close(); });
    onKey(Qt::Key_F10, [bar, menu] {
        bar->setActiveAction(menu->menuAction());
        menu->setActiveAction(menu->actions().first());
    });
}

void QtApplication::addEditMenu(QMainWindow& window)
{
    auto* menu = window.menuBar()->addMenu("&Edit");
    for (const auto& entry : editCommands) {
        if (!entry.title) {
            menu->addSeparator();
            continue;
        }
        auto* item = menu->addAction(entry.title);
        if (entry.key != QKeySequence::UnknownKey)
            item->setShortcut(entry.key);
        // The fields know these keys themselves; here they are shown, and taken from the menu only.
        item->setShortcutContext(Qt::WidgetShortcut);
        QObject::connect(item, &QAction::triggered, item, [slot = entry.slot] { perform(slot); });
    }
}

} // namespace zarn::linux_backend
