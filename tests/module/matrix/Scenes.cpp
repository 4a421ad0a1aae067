#include "tests/module/matrix/Scenes.h"

#include <initializer_list>

namespace
{
constexpr LogSetting LOG_SETTINGS[] = {
    {"no log", false, false, 6},
    {"transient log", true, false, 6},
    {"OPC log of 2 amplifiers", false, true, 2},
    {"OPC log of none", false, true, 0},
    {"both logs of 6 amplifiers", true, true, 6},
    {"OPC log of -1 amplifiers", false, true, -1},
};

using Actions = std::vector<Action>;

Actions join(std::initializer_list<Actions> parts)
{
    Actions all;
    for (const Actions& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Actions regulate(std::initializer_list<int> powers)
{
    Actions actions;
    for (const int nPower : powers) {
        actions.push_back({EAction::Regulate, nPower});
    }
    return actions;
}

/** Both steps without a wait, three of the ramp and the first of the closed loop. */
Actions switchOn(int nMode)
{
    return join({{{EAction::OnRequest, 0, nMode}}, regulate({200, 200, 200, 200, 200, 200})});
}

Actions switchOff()
{
    return join({{{EAction::OffRequest, 0, 1}}, regulate({200, 200, 200})});
}

std::vector<Scene> makeScenes()
{
    return {
        {"switch-on", 24, 60, 50, true, switchOn(1)},
        {"switch-on at the default interval", 0, 60, 50, false,
         join({regulate({200}), switchOn(1), regulate({200, 200, 200})})},
        {"ramp out of time", 24, 5, 50, false,
         join({{{EAction::OnRequest, 0, 1}}, regulate({200, 200, 200, 200, 200, 200, 200, 200})})},
        {"ramp that ends with its time", 24, 45, 50, false,
         join({{{EAction::OnRequest, 0, 1}}, regulate({200, 200, 200, 200, 200, 200, 200})})},
        {"switch-on begun anew", 24, 60, 50, false,
         join({{{EAction::OnRequest, 0, 1}},
               regulate({200, 200, 200}),
               {{EAction::OffRequest, 0, 1}},
               regulate({200}),
               switchOn(0)})},
        {"closed loop", 24, 60, 50, true,
         join({switchOn(1),
               regulate({230, -900, 2000}),
               {{EAction::OnRequest, 0, 0}},
               regulate({500, -500}),
               {{EAction::OnRequest, 0, 2}},
               regulate({100})})},
        {"switch-off", 24, 60, 50, false, join({switchOn(1), switchOff()})},
        {"production test", 24, 60, 80, true,
         join({{{EAction::ProductionTest, 0, 2}},
               switchOn(0),
               {{EAction::ProductionTest, 1, 1}},
               regulate({2500, 2500, -2500, -2500}),
               {{EAction::ProductionTest, 0, 0}},
               regulate({200, 200})})},
        {"on, off and on", 24, 60, 50, false,
         join({switchOn(1), switchOff(), switchOn(0), {{EAction::OnRequest, 0, 1}}, switchOff()})},
        {"delayed switch-on", 6, 60, 50, false,
         join({{{EAction::EnterDelay}},
               regulate({200, 200}),
               {{EAction::Wait, 1099}},
               regulate({200}),
               {{EAction::Wait, 1}},
               regulate({200, 200, 200, 200, 200, 200, 200, 200})})},
    };
}
} // namespace

std::string textOf(const Action& action)
{
    static constexpr std::array<const char*, 6> NAMES = {"on request in mode",      "off request in mode",
                                                         "production test in mode", "regulate to",
                                                         "delayed switch-on",       "wait for ms"};
    const bool bMode = action.eAction < EAction::Regulate;
    return std::string(NAMES[static_cast<std::size_t>(action.eAction)]) + ' ' +
           std::to_string(bMode ? action.nMode : action.nValue);
}

const std::vector<Scene>& scenes()
{
    static const std::vector<Scene> s_scenes = makeScenes();
    return s_scenes;
}

std::span<const LogSetting> logSettings()
{
    return LOG_SETTINGS;
}
