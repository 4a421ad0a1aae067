/** @file
 * The places where a controller calls its handler, and what each does about a refusal: the behaviour as a table.
 */
#pragma once

#include "tests/module/matrix/FaultyHandler.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

/** The controller's members that a step may change or that decide about it. */
enum EMember : std::size_t
{
    STATE,
    PREVIOUS_STATE,
    STATUS,
    POWER_MODE,
    PCTRL,
    PTARGET,
    PMEASURED,
    PREDICTED,
    LAST_PTARGET,
    LAST_PCTRL,
    LAST_PREDICTED,
    TX_PMIN,
    PCTRL_MIN,
    PCTRL_MAX,
    WAIT_COUNT,
    RAMP_COUNT,
    DETECTOR,
    POWER_ERROR,
    LOOP_MODE,
    PRODUCTION_TEST,
    DELAY_START_MS,
    MEMBER_COUNT
};

using Members = std::array<std::int64_t, MEMBER_COUNT>;

/** @return the members that differ, with both values */
std::string differencesOf(const Members& before, const Members& after);
/** @return a bit per member that differs */
std::uint32_t changesOf(const Members& before, const Members& after);

/** What a refusal at a place does. */
enum class ERefusal
{
    Stops,    /**< the step ends there with a failure and is tried again */
    IsTraced, /**< the step goes on */
    IsUnseen  /**< the step goes on without a trace */
};

/** A place: in which state which call is made. */
struct Place
{
    static constexpr int ANY = -1;

    const char* pName;
    int nState; /**< at the step's begin; ANY for a place outside of the regulation */
    EHandlerCall eCall;
    int nArgument; /**< first argument, where it tells places apart; or ANY */
    ERefusal eRefusal;
    /** Level 1, a line per message; {result} is the result in hexadecimal, {first} the first argument. */
    const char* pTraces;
    /** A bit per member that a step may have changed by the time that this call stops it. */
    std::uint32_t nMayChange;
};

std::span<const Place> handlerPlaces();

/** @return the place of a call in a step that began in a state, or null when the behaviour knows none */
const Place* findPlace(int nStateAtBegin, const Event& call);

/** @return what a refused call at a place traces at level 1 */
std::vector<std::string> tracesOf(const Place& place, const Event& call);
