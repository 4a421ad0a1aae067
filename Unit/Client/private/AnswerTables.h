/** @file
 * What the reading commands got, as tables.
 */
#pragma once

#include "Unit/Text/Table.h"

#include <nlohmann/json.hpp>

#include <string>

/** Both shapes of an answer. Each throws std::runtime_error for an answer that lacks what it is about. */
struct AnswerForm
{
    std::string (*text)(const nlohmann::ordered_json& answer); /**< for people; lines that end with newlines */
    Table (*csv)(const nlohmann::ordered_json& answer);        /**< headings with units */
};

extern const AnswerForm STATUS_FORM;
extern const AnswerForm GAIN_FORM;
extern const AnswerForm TRANSIENT_LOG_FORM;
extern const AnswerForm OPC_LOG_FORM;
extern const AnswerForm TRACE_LEVEL_FORM;
extern const AnswerForm FAULT_FORM;
