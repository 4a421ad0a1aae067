/** @file
 * A replay's state and changes as the page writes them.
 */
#pragma once

#include "Unit/LivePage/PageReplay.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

/** @return an object such as {"from_us":0,"to_us":60000000,"position_us":1000,"speed":10,"paused":false} */
nlohmann::ordered_json replayJson(const ReplayState& state);

/**
 * Reads an object with one or more of position_us, speed and paused.
 * @param state says how far a position may be
 * @throws BadRequest that says what is wrong and what is allowed
 */
ReplayChange readReplayChange(const std::string& sBody, const ReplayState& state);
