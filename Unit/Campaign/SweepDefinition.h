/** @file
 * What a sweep file says: which runs of a scenario a campaign makes.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** A value of a parameter. */
struct SweepValue
{
    std::string sToml;            /**< as it would stand in a scenario file */
    std::optional<double> number; /**< none for a text, true or false */
};

/** How the runs of a sweep are chosen. */
enum class ESweepMethod
{
    Grid,  /**< every combination of the parameters' values */
    Random /**< each run draws its own values */
};

/** How a random sweep draws a parameter. */
enum class EDistribution
{
    Uniform,
    LogUniform,
    Normal,
    Choice /**< one of the listed values, each as likely */
};

/** One parameter that a sweep varies. */
struct SweepParameter
{
    std::string sPath;              /**< of the scenario, such as "transmitter.detector_noise_db" */
    std::string sName;              /**< as reports call it */
    std::vector<SweepValue> values; /**< of a grid or a choice, in their order */
    bool bLogarithmic = false;      /**< drawn on a logarithmic axis */
    EDistribution eDistribution = EDistribution::Choice;
    bool bInteger = false;         /**< draws are rounded to whole numbers */
    std::optional<double> minimum; /**< of draws */
    std::optional<double> maximum; /**< of draws */
    double mean = 0.0;             /**< of a normal distribution */
    double deviation = 0.0;        /**< of a normal distribution */
    std::string sDescription;      /**< all that determines its values, in one line */
    std::size_t nLine = 0;         /**< in the sweep file */
    std::size_t nColumn = 0;       /**< in the sweep file */
};

/** A campaign's runs. */
struct SweepDefinition
{
    std::string sPath; /**< of the sweep file */
    std::string sText; /**< that stands in it */
    std::string sTitle;
    std::string sScenario; /**< path of the scenario file, from where the program runs */
    ESweepMethod eMethod = ESweepMethod::Grid;
    std::uint64_t nSeed = 1;
    std::uint64_t nRepeats = 1;            /**< runs of each point of a grid */
    std::uint64_t nRuns = 0;               /**< in all */
    std::optional<double> durationSeconds; /**< of every run, instead of the scenario's */
    std::vector<std::string> measures;     /**< those that reports show; empty for the usual ones */
    std::vector<SweepParameter> parameters;
};

/** What one run of a campaign is made with. */
struct RunPlan
{
    std::uint64_t nNumber = 0;      /**< counted from 0 */
    std::uint64_t nSeed = 0;        /**< of the simulated transmitter, 0 to 2147483647 */
    std::vector<SweepValue> values; /**< one per parameter */
};

/** @throws ConfigurationError that names file, line, column, what was read and what is allowed */
SweepDefinition loadSweepDefinition(const std::string& sPath);

/** Reads a sweep from a text. @param sPath that errors name, and whose folder the scenario's path starts from */
SweepDefinition parseSweepDefinition(const std::string& sText, const std::string& sPath);

/** @return run nNumber of a sweep; depends on nothing but the arguments, and is the same on every machine */
RunPlan planRun(const SweepDefinition& definition, std::uint64_t nNumber);
