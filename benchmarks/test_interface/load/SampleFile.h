/** @file
 * The samples that every server of a comparison answers with.
 */
#pragma once

#include <array>
#include <string>
#include <vector>

/** Names of a sample's quantities, in the order of the file's columns. */
inline constexpr std::array<const char*, 5> SAMPLE_MEMBERS = {"TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower",
                                                              "TxIfPower", "TxRfGain"};

/** The five quantities of one step, powers and gain in hundredths of a decibel. */
using Sample = std::array<int, SAMPLE_MEMBERS.size()>;

/** @param sPath a line of five integers per sample. @throws std::runtime_error when there is none, or something else */
std::vector<Sample> readSamples(const std::string& sPath);
