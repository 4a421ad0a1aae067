/** @file
 * Samples and events as the page reads them.
 */
#pragma once

#include "Unit/Process/StepSample.h"
#include "Unit/Recorder/StepSummary.h"
#include "Unit/Telemetry/RunEvent.h"

#include <fmt/format.h>

#include <span>

/**
 * Appends samples as a JSON list of channels with a column for each quantity: whole numbers, such as hundredths of a
 * decibel, and null where there is none, above all for powers while the transmitter is off.
 */
void appendSamples(fmt::memory_buffer& buffer, std::span<const StepSample> samples);

/**
 * Appends what a channel's steps come to over the parts of a range, as appendSamples() does its columns, but with
 * minimum, mean and maximum:
 * {"c":0,"t_us":[...],"n":[...],"failed":[...],"state":[...],"pctrl_cdb":{"min":[...],"mean":[...],"max":[...]}}
 */
void appendSummaries(fmt::memory_buffer& buffer, unsigned int nChannel, std::span<const StepSummary> parts);

/** Appends events as a JSON list of objects. */
void appendEvents(fmt::memory_buffer& buffer, std::span<const RunEvent> events);
