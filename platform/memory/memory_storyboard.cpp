// SPDX-License-Identifier: MIT
#include "platform/memory/memory_storyboard.h"

#include "base/fatal.h"

#include <algorithm>
#include <utility>

namespace zarn::memory {

void MemoryView::setPreferredContentSize(int newWidth, int newHeight)
{
    if (recordsSizes)
        m_events.push_back("size " + std::to_string(newWidth) + " x " + std::to_string(newHeight));
    width = newWidth;
    height = newHeight;
}

void MemoryView::performSegue(std::string_view identifier)
{
    m_events.push_back("segue " + std::string(identifier));
    if (onSegue)
        onSegue(identifier);
}

void MemoryView::dismissViewController()
{
    m_events.emplace_back("dismiss");
    if (onDismiss)
        onDismiss();
}

bool MemoryWindowController::click(std::string_view name)
{
    const auto action = actionOfButton(name);
    auto& button = outlets.buttonNamed(name);
    if (!controller || action.empty() || button.isHidden() || !button.isEnabled())
        return false;
    button.flip();
    return controller->performAction(action, &button);
}

bool MemoryWindowController::choose(std::string_view title)
{
    return controller && !outlets.popUp.isHidden() && outlets.popUp.isEnabled()
        && outlets.popUp.choose(title) && controller->performAction("selectServer_Action", nullptr);
}

bool MemoryWindowController::type(std::string_view name, std::string_view text)
{
    auto& field = outlets.fieldNamed(name);
    if (field.isHidden() || !field.isEnabled() || !field.isEditable())
        return false;
    field.type(text);
    return true;
}

bool MemoryWindowController::moveFocus(std::string_view name)
{
    const auto give = [](auto& control) {
        if (control.isHidden() || !control.isEnabled())
            return false;
        control.takeFocus();
        return true;
    };
    return outlets.textField(name) ? give(outlets.fieldNamed(name))
        : outlets.button(name)     ? give(outlets.buttonNamed(name))
                                   : false;
}

void MemoryWindowController::typeKeys(std::string_view text) const
{
    auto* const field = dynamic_cast<MemoryTextField*>(outlets.focus.control);
    if (field && field->isEditable())
        field->type(field->stringValue() + std::string(text));
}

void MemoryWindowController::pressReturn()
{
    if (auto* const field = dynamic_cast<MemoryTextField*>(outlets.focus.control))
        field->endEditing();
    else
        pressSpace();
}

void MemoryWindowController::pressSpace()
{
    const auto focused = std::ranges::find_if(
        outlets.buttons, [](const auto& entry) { return entry.second->hasFocus(); });
    if (focused != outlets.buttons.end())
        (void)click(focused->first);
}

std::unique_ptr<MemoryWindowController> MemoryStoryboard::load(
    std::string_view customClass, const std::string& title)
{
    auto result = std::make_unique<MemoryWindowController>(title, m_events);
    result->withoutWindow = withoutWindows;
    layOut(customClass, result->outlets);
    ++instantiated;
    if (m_factory)
        result->controller = m_factory(customClass);
    if (result->controller) {
        result->controller->setView(&result->view);
        result->controller->connectOutlets(result->outlets);
        result->controller->viewDidLoad();
    }
    return result;
}

std::unique_ptr<WindowController> MemoryStoryboard::instantiateController(
    std::string_view identifier)
{
    if (identifier != "aboutWC" || unknownIdentifiers.contains(identifier))
        return nullptr;
    return load("AboutVC", "About");
}

std::unique_ptr<WindowController> MemoryStoryboard::instantiateInitialController()
{
    auto initial = load("LoginVC", "Zarn Actions");
    initial->view.onSegue = [this](std::string_view identifier) {
        if (identifier != "termsOfUse")
            fatalError(R"(storyboard "Main" has no segue ")" + std::string(identifier) + "\"");
        presentTerms();
    };
    return initial;
}

void MemoryStoryboard::presentTerms()
{
    m_terms = load("ToUVC", "");
    if (!m_terms->controller)
        return;
    m_terms->view.onDismiss = [this] {
        m_terms->controller->viewWillDisappear();
        m_dismissed.push_back(std::move(m_terms));
    };
    m_terms->controller->viewWillAppear();
    m_terms->controller->viewDidAppear();
}

void MemoryStoryboard::showWindow(std::unique_ptr<WindowController> controller)
{
    shown.emplace_back(static_cast<MemoryWindowController*>(controller.release()));
    auto& window = *shown.back();
    window.view.onDismiss = [this, &window] { dismiss(window); };
    m_events.push_back("show " + window.ownWindow.title());
    if (auto* view = window.controller.get()) {
        view->viewWillAppear();
        view->viewDidAppear();
    }
}

std::unique_ptr<MemoryWindowController> MemoryStoryboard::takeOffScreen(std::size_t index)
{
    auto closing = std::move(shown.at(index));
    shown.erase(shown.begin() + static_cast<std::ptrdiff_t>(index));
    if (closing->controller)
        closing->controller->viewWillDisappear();
    return closing;
}

void MemoryStoryboard::close(std::size_t index)
{
    const auto closing = takeOffScreen(index);
    if (shown.empty() && onLastWindowClosed)
        onLastWindowClosed();
}

void MemoryStoryboard::dismiss(const MemoryWindowController& window)
{
    const auto it = std::find_if(
        shown.begin(), shown.end(), [&](const auto& entry) { return entry.get() == &window; });
    if (it == shown.end())
        return;
    m_dismissed.push_back(takeOffScreen(static_cast<std::size_t>(it - shown.begin())));
    if (shown.empty() && onLastWindowClosed)
        onLastWindowClosed();
}

bool MemoryStoryboard::closeByUser(std::string_view title)
{
    if (m_terms && m_terms->ownWindow.title() == title) {
        const bool lets = (m_terms->ownWindow.styleMask() & window_style::closable) != 0;
        if (lets)
            m_terms->view.onDismiss();
        return lets;
    }
    for (std::size_t i = shown.size(); i-- > 0;) {
        const auto& window = shown[i]->ownWindow;
        if (window.title() != title)
            continue;
        if ((window.styleMask() & window_style::closable) == 0)
            return false;
        close(i);
        return true;
    }
    return false;
}

std::vector<Window*> MemoryStoryboard::windows() const
{
    std::vector<Window*> result;
    for (const auto& window : shown)
        result.push_back(&window->ownWindow);
    if (m_terms)
        result.push_back(&m_terms->ownWindow);
    return result;
}

void MemoryStoryboard::closeAll()
{
    m_terms.reset();
    shown.clear();
    m_dismissed.clear();
}

} // namespace zarn::memory
