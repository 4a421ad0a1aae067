/** @file
 * The subcommands of the command that talks to a unit, and what each asks of it.
 */
#pragma once

#include "Unit/Client/private/AnswerTables.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

/** Whether a method is about one channel. */
enum class EChannelUse
{
    Always,    /**< the channel goes with each call */
    WhenNamed, /**< about all channels where none is named */
    Never
};

/** A call of a method. */
struct ControlRequest
{
    std::string sMethod;
    nlohmann::ordered_json members = nlohmann::ordered_json::object();
    EChannelUse eChannelUse = EChannelUse::Always;
    const AnswerForm* pForm = nullptr;                     /**< null for an answer that only says that it is done */
    std::string sPlotFile = {};                            /**< empty for none */
    std::vector<nlohmann::ordered_json> furtherCalls = {}; /**< members of more calls of the method, after the first */
};

/** A subcommand that has none itself. */
struct ControlLeaf
{
    const CLI::App* pCommand;
    std::function<ControlRequest()> request; /**< reads the parsed arguments */
};

/** Each adds subcommands. @param leaves gets those that ask something of a unit */
void addSettingCommands(CLI::App& control, std::vector<ControlLeaf>& leaves); /**< tx, power, ... interval */
void addLogCommands(CLI::App& control, std::vector<ControlLeaf>& leaves);     /**< log */
void addServiceCommands(CLI::App& control, std::vector<ControlLeaf>& leaves); /**< status, trace, fault */

/** Adds a subcommand with a heading line and examples. */
CLI::App& addControlCommand(CLI::App& parent, const char* pName, const char* pDescription, const char* pExamples);
