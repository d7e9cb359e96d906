// SPDX-License-Identifier: MIT
#include "platform/memory/memory_storyboard.h"

namespace zarn::memory {

std::unique_ptr<WindowController> MemoryStoryboard::load(
    std::string_view customClass, const std::string& title)
{
    auto result = std::make_unique<MemoryWindowController>(title, m_events);
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
    return load("LoginVC", "Zarn Actions");
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

} // namespace zarn::memory
