/** @file
 * What happens in a run besides its steps.
 */
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/** What an event is about. */
enum class ERunEvent
{
    State,   /**< a channel changed its state */
    Failure, /**< a channel's steps began to fail, or fail no longer */
    Overrun, /**< deadlines were skipped */
    Command, /**< a method of the test interface that changes something was carried out, or failed in the regulation */
    Note     /**< anything else about the run */
};

/** @return the name that files and pages use, such as "state" */
const char* runEventName(ERunEvent eEvent);

/** The detail of the note that tells when the stop of a run began to switch its transmitters off. */
inline constexpr const char* STOP_DETAIL = R"({"stop":true})";

/** An event of a run. */
struct RunEvent
{
    std::uint64_t nId = 0;                      /**< given by the feed: 0, 1, 2, ...; a recorded one keeps its own */
    std::uint64_t nTimeUs = 0;                  /**< since the first step's deadline */
    std::uint64_t nSteps = 0;                   /**< steps that each channel had taken before it */
    std::optional<unsigned int> nChannelNumber; /**< none for the unit */
    ERunEvent eEvent = ERunEvent::Note;
    std::string sText;   /**< for people, one line */
    std::string sDetail; /**< for programs: JSON, of a command an object with method and params; else mostly empty */
};
