/** @file
 * Random numbers of a run, the same on every machine: nothing but integers and the four exact operations of doubles.
 */
#pragma once

#include <cstdint>
#include <string_view>

/** Whole numbers out of a counter: SplitMix64's output function over seed, run and stream in turn. */
std::uint64_t counterRandom(std::uint64_t nSeed, std::uint64_t nRun, std::uint64_t nStream);

/** @return the stream that a parameter draws from, by its path: FNV-1a */
std::uint64_t streamOf(std::string_view sPath);

/** @return a number in the open interval from 0 to 1, on a grid of 2^-53 shifted by half a step */
double unitInterval(std::uint64_t nRandom);

/** @return natural logarithm of a positive number, to within a few units of the last place */
double exactLog(double value);

/** @return e to a power from -700 to 700 */
double exactExp(double value);

/** @return the value below which a standard normal variable is with this probability, to within 1.2e-9 relatively */
double normalQuantile(double probability);

/** @return the number with nine significant digits, so that people can copy it */
double nineDigits(double value);
