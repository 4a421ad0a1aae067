/** @file
 * Tells whether an answer is the right one.
 */
#pragma once

#include "benchmarks/test_interface/load/SampleFile.h"

#include <string>
#include <vector>

/**
 * Judges the body of an answer by what it says, since servers differ in white space and in the name of an integer.
 * @return why it is not RadioChannelID 0 with exactly these samples; empty when it is
 */
std::string whyNotSamples(const std::string& sBody, const std::vector<Sample>& samples);

/** @return why a body is not the response of a call that succeeded; empty when it is */
std::string whyNotSuccess(const std::string& sBody);
