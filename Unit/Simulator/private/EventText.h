/** @file
 * What happens in a scenario, in few words.
 */
#pragma once

#include "Unit/Simulator/Scenario.h"

#include <string>
#include <vector>

/** Something that happens at a time of a run. */
struct EventMark
{
    double seconds = 0.0;
    std::string sText; /**< empty for a repetition of an event */
};

/** @return the event's label, or what it does */
std::string eventText(const ScenarioEvent& event);

/** @return everything that happens, faults included, ascending in time; of many repetitions only the first */
std::vector<EventMark> marksOf(const Scenario& scenario);
