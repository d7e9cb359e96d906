// SPDX-License-Identifier: MIT
#include "platform/memory/memory_storyboard.h"

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
    if (action == "hideCreds_action" || action == "useUsername_action"
        || action == "saveCredentials_Action")
        button.flip();
    return controller->performAction(action, &button);
}

bool MemoryWindowController::choose(std::string_view title)
{
    return controller && !outlets.popUp.isHidden() && outlets.popUp.choose(title)
        && controller->performAction("selectServer_Action", nullptr);
}

bool MemoryWindowController::type(std::string_view name, std::string_view text)
{
    auto& field = outlets.fieldNamed(name);
    if (field.isHidden() || !field.isEnabled() || !field.isEditable())
        return false;
    field.type(text);
    return true;
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
        if (identifier == "termsOfUse")
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
    m_events.push_back("show " + shown.back()->ownWindow.title());
    if (auto* view = shown.back()->controller.get()) {
        view->viewWillAppear();
        view->viewDidAppear();
    }
}

void MemoryStoryboard::close(std::size_t index)
{
    const auto closing = std::move(shown.at(index));
    shown.erase(shown.begin() + static_cast<std::ptrdiff_t>(index));
    if (closing->controller)
        closing->controller->viewWillDisappear();
    if (shown.empty() && onLastWindowClosed)
        onLastWindowClosed();
}

} // namespace zarn::memory
