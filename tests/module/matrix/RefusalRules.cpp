#include "tests/module/matrix/RefusalRules.h"

#include "tests/module/matrix/SceneRun.h"

namespace
{
std::string textOf(const Texts& texts)
{
    std::string sText;
    for (const std::string& sEntry : texts) {
        sText += " \"" + sEntry + '"';
    }
    return sText.empty() ? " nothing" : sText;
}

std::string violationAtStop(const Place& place, const Event& call, const Members& before, const Outcome& outcome)
{
    const std::string sCall = std::string("after the refusal at \"") + place.pName + "\" ";
    if (outcome.nResult != EAF_FAILED) {
        return sCall + "expected result 8000, actual " + std::to_string(outcome.nResult);
    }
    if (!(outcome.events.back() == call)) {
        return sCall + "expected nothing more, actual " + ::textOf(outcome.events);
    }
    if ((changesOf(before, outcome.members) & ~place.nMayChange) != 0) {
        return sCall + "changed what it should have left:" + differencesOf(before, outcome.members);
    }
    return {};
}
} // namespace

std::string RefusalRules::violation(int nStateAtBegin, const Members& before, const Outcome& outcome)
{
    Texts failures;
    bool bStopped = false;
    for (const Event& event : outcome.events) {
        if (!event.isCall()) {
            continue;
        }
        const Place* const pPlace = findPlace(nStateAtBegin, event);
        if (pPlace == nullptr) {
            return "a call that the behaviour does not know: " + ::textOf(event);
        }
        if (!event.isRefused()) {
            continue;
        }
        for (std::string& sText : tracesOf(*pPlace, event)) {
            failures.push_back(std::move(sText));
        }
        if (pPlace->eRefusal == ERefusal::Stops) {
            std::string sViolation = violationAtStop(*pPlace, event, before, outcome);
            if (!sViolation.empty()) {
                return sViolation;
            }
            bStopped = true;
        }
    }
    if (!bStopped && outcome.nResult != EAF_OK) {
        return "expected result 0, actual " + std::to_string(outcome.nResult);
    }
    return outcome.failures == failures
               ? ""
               : "level 1, expected" + textOf(failures) + "\n  actual  " + textOf(outcome.failures);
}
