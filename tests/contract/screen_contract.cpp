// SPDX-License-Identifier: MIT
#include "tests/contract/screen_contract.h"

namespace zarn {

ProbeController::ProbeController(std::string customClass, ProbeRecord& record)
    : m_customClass(std::move(customClass))
    , m_record(record)
{
    m_record.living[m_customClass] = this;
}

ProbeController::~ProbeController()
{
    record("ended");
    if (m_record.living[m_customClass] == this)
        m_record.living.erase(m_customClass);
}

void ProbeController::record(std::string_view what)
{
    m_record.events.push_back(m_customClass + " " + std::string(what));
}

void ProbeController::connectOutlets(OutletSource& source)
{
    m_outlets = &source;
    (void)view(); // There is one by now.
    record("connectOutlets");
}

void ProbeController::viewDidLoad()
{
    record("viewDidLoad");
}

void ProbeController::viewWillAppear()
{
    record("viewWillAppear");
    if (const auto found = m_record.onWillAppear.find(m_customClass);
        found != m_record.onWillAppear.end())
        found->second(view());
}

void ProbeController::viewDidAppear()
{
    record("viewDidAppear");
}

void ProbeController::viewWillDisappear()
{
    record("viewWillDisappear");
}

bool ProbeController::performAction(std::string_view action, Button* button)
{
    m_record.events.emplace_back(action);
    if (onAction)
        onAction(button);
    return true;
}

ScreenContract::ScreenContract()
{
    storyboard().setViewControllerFactory(
        [this](std::string_view customClass) -> std::unique_ptr<ViewController> {
            return std::make_unique<ProbeController>(std::string(customClass), record);
        });
}

void ScreenContract::showInitialWindow()
{
    storyboard().showWindow(storyboard().instantiateInitialController());
    fixture->settle();
    record.events.clear();
}

std::vector<std::string> ScreenContract::windowTitles()
{
    std::vector<std::string> titles;
    for (auto* window : fixture->application().windows())
        titles.push_back(window->title());
    return titles;
}

} // namespace zarn
