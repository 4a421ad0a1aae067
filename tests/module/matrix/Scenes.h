/** @file
 * What the transmitter is asked for while faults are tried: requests and regulator calls in a row.
 */
#pragma once

#include "tests/module/matrix/ControllerModel.h"

#include <span>
#include <string>
#include <vector>

/** What is done with a controller. */
enum class EAction
{
    OnRequest,      /**< with the power mode */
    OffRequest,     /**< with the power mode */
    ProductionTest, /**< on or off, with the loop mode */
    Regulate,       /**< with the requested power */
    EnterDelay,     /**< of a delayed switch-on */
    Wait            /**< milliseconds */
};

struct Action
{
    EAction eAction;
    int nValue = 0;
    int nMode = 0;
};

std::string textOf(const Action& action);

/** A row of actions, with the settings that it begins with. */
struct Scene
{
    const char* pName;
    int nIntervalMs; /**< 0: never set */
    int nRampGain;   /**< of the first detector state, in percent */
    int nLoopGain;   /**< of the first detector state, in percent */
    bool bWithLogs;  /**< worth repeating with each setting of the logs */
    std::vector<Action> actions;
};

/** The lower limit that every scene begins with. */
inline constexpr int SCENE_TX_PMIN = -500;
/** The power requested once a scene is over. */
inline constexpr int SETTLING_POWER = 200;

const std::vector<Scene>& scenes();

/** The first setting records nothing. */
std::span<const LogSetting> logSettings();
