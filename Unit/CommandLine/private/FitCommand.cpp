#include "Unit/CommandLine/FitCommand.h"

#include "Platform/ConfigurationError.h"
#include "Unit/CommandLine/CommandLine.h"
#include "Unit/CommandLine/private/FittedTransmitter.h"
#include "Unit/CommandLine/private/OptionChecks.h"
#include "Unit/Configuration/ValueRanges.h"
#include "Unit/Text/Table.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <set>
#include <string>
#include <vector>

/** What a person asks of a fit. */
struct FitCommand::Options
{
    std::string sFile;
    std::optional<double> frequencyMhz; /**< only the sweeps at this frequency */
    std::optional<double> supplyVolts;  /**< only the sweeps at this supply */
    std::optional<double> maxPowerDbm;  /**< settings of a transmitter with this upper limit, too */
    bool bCsv = false;
    bool bJson = false;
};

namespace
{
constexpr const char* FIT_EXAMPLES =
    "Examples:\n"
    "  opc fit-amplifier sweep.csv\n"
    "      gain, saturated power and smoothness for each frequency and supply in the file\n"
    "  opc fit-amplifier sweep.csv --frequency 2000 --supply 12 --max-power 31\n"
    "      one of them, and the lines for a unit file or a scenario\n"
    "\n"
    "The file is CSV with a header row that names pin_dBm and pout_dBm, and frequency_MHz and supply_V where there\n"
    "are several. Other columns are left out.\n"
    "Exit codes: 0 well, 1 something failed, 2 a wrong argument or file.";

/** One column of what is printed. */
struct Field
{
    const char* pName;
    std::optional<double> (*value)(const FittedSweep&); /**< none where the file does not say */
    const char* pFormat;
};

constexpr Field FIELDS[] = {
    {"frequency_mhz", [](const FittedSweep& fitted) { return fitted.place.frequencyMhz; }, "{}"},
    {"supply_v", [](const FittedSweep& fitted) { return fitted.place.supplyVolts; }, "{}"},
    {"points", [](const FittedSweep& fitted) { return std::optional(static_cast<double>(fitted.nPoints)); }, "{}"},
    {"gain_db", [](const FittedSweep& fitted) { return std::optional(fitted.fit.gainDb); }, "{:.2f}"},
    {"psat_dbm", [](const FittedSweep& fitted) { return std::optional(fitted.fit.saturatedDbm); }, "{:.2f}"},
    {"rapp_p", [](const FittedSweep& fitted) { return std::optional(fitted.fit.rappP); }, "{:.2f}"},
    {"p1db_dbm", [](const FittedSweep& fitted) { return std::optional(fitted.fit.compressedDbm); }, "{:.2f}"},
    {"rms_db", [](const FittedSweep& fitted) { return std::optional(fitted.fit.rmsResidualDb); }, "{:.3f}"},
    {"max_db", [](const FittedSweep& fitted) { return std::optional(fitted.fit.maxResidualDb); }, "{:.3f}"},
};

/** Keeps the sweeps with a value that a person chose. @throws ConfigurationError when there is none */
void select(std::vector<AmplifierSweep>& sweeps, const std::string& sFile, const char* pOption,
            const std::optional<double>& chosen, std::optional<double> SweepPlace::*pField)
{
    if (!chosen) {
        return;
    }
    std::set<double> offered;
    for (const AmplifierSweep& sweep : sweeps) {
        if (sweep.place.*pField) {
            offered.insert(*(sweep.place.*pField));
        }
    }
    std::erase_if(sweeps, [&chosen, pField](const AmplifierSweep& sweep) { return sweep.place.*pField != chosen; });
    if (sweeps.empty()) {
        throw ConfigurationError(offered.empty() ? fmt::format("{}: {} has no column to choose by", pOption, sFile)
                                                 : fmt::format("{}: \"{}\" is not in {}; choose one of {}", pOption,
                                                               *chosen, sFile, fmt::join(offered, ", ")));
    }
}

std::vector<FittedSweep> fitAll(const std::vector<AmplifierSweep>& sweeps, const std::string& sFile)
{
    std::vector<FittedSweep> fits;
    for (const AmplifierSweep& sweep : sweeps) {
        try {
            fits.push_back({sweep.place, sweep.points.size(), fitAmplifier(sweep.points)});
        }
        catch (const AmplifierFitError& error) {
            throw ConfigurationError::atLine(
                sFile, sweep.nLine,
                fmt::format("the sweep {}, which begins here, {}", placeText(sweep.place), error.what()));
        }
    }
    return fits;
}

Table tableOf(const std::vector<FittedSweep>& fits)
{
    Table table;
    table.rows.resize(fits.size());
    for (const Field& field : FIELDS) {
        if (!field.value(fits.front())) {
            continue; // all rows of a file have it, or none
        }
        table.headings.emplace_back(field.pName);
        for (std::size_t nFit = 0; nFit < fits.size(); ++nFit) {
            table.rows[nFit].push_back(fmt::format(fmt::runtime(field.pFormat), *field.value(fits[nFit])));
        }
    }
    return table;
}

std::string csvText(const Table& table)
{
    std::string sText = csvLine(table.headings);
    for (const auto& row : table.rows) {
        sText += csvLine(row);
    }
    return sText;
}

/** @return settings for a file in TOML, for each fit */
std::string settingsText(const std::vector<FittedSweep>& fits, double maxPowerDbm)
{
    std::string sText;
    for (const FittedSweep& fitted : fits) {
        const std::optional<GainSlope> slope = gainSlope(fits, fitted.place.supplyVolts);
        sText +=
            fmt::format("\n# The amplifier {}, rms {:.3f} dB.\n", placeText(fitted.place), fitted.fit.rmsResidualDb);
        if (slope) {
            sText += fmt::format("# The slope is a line through {} frequencies, off by up to {:.2f} dB.\n",
                                 slope->nFrequencies, slope->largestErrorDb);
        }
        sText += "[transmitter]\n";
        for (const auto& [sKey, value] : transmitterSettings(fitted, maxPowerDbm, slope)) {
            sText += fmt::format("{} = {:.2f}\n", sKey, value);
        }
    }
    return sText;
}

std::string jsonText(const std::vector<FittedSweep>& fits, const std::optional<double>& maxPowerDbm)
{
    auto array = nlohmann::ordered_json::array();
    for (const FittedSweep& fitted : fits) {
        nlohmann::ordered_json members;
        for (const Field& field : FIELDS) {
            if (const std::optional<double> value = field.value(fitted)) {
                members[field.pName] = *value;
            }
        }
        members["points"] = fitted.nPoints; // whole
        if (maxPowerDbm) {
            const std::optional<GainSlope> slope = gainSlope(fits, fitted.place.supplyVolts);
            for (const auto& [sKey, value] : transmitterSettings(fitted, *maxPowerDbm, slope)) {
                members["transmitter"][sKey] = value;
            }
        }
        array.push_back(members);
    }
    return nlohmann::ordered_json{{"fits", array}}.dump(2) + "\n";
}

const TransmitterKey& maxPowerKey()
{
    const auto& keys = transmitterKeys();
    return *std::find_if(keys.begin(), keys.end(),
                         [](const TransmitterKey& key) { return key.pField == &TransmitterParameters::maxPowerDbm; });
}
} // namespace

FitCommand::FitCommand(CLI::App& app)
    : m_pCommand(app.add_subcommand("fit-amplifier", "Fit the simulated amplifier to a measured power sweep")),
      m_pOptions(std::make_unique<Options>())
{
    m_pCommand->add_option("SWEEP.csv", m_pOptions->sFile, "The measured sweep")->required()->type_name("FILE");
    m_pCommand->add_option("--frequency", m_pOptions->frequencyMhz, "Fit only the sweeps at this frequency")
        ->type_name("MHZ")
        ->check(numberRange(0.0, true, HIGHEST_FREQUENCY_MHZ));
    m_pCommand->add_option("--supply", m_pOptions->supplyVolts, "Fit only the sweeps at this supply voltage")
        ->type_name("V")
        ->check(numberRange(LOWEST_SUPPLY_VOLTS, true, HIGHEST_SUPPLY_VOLTS));
    CLI::Option* pMaxPower =
        m_pCommand
            ->add_option("--max-power", m_pOptions->maxPowerDbm,
                         "Print the settings, too, of a transmitter whose control power goes up to this")
            ->type_name("DBM")
            ->check(numberRange(maxPowerKey().minimum, true, maxPowerKey().maximum));
    CLI::Option* pCsv = m_pCommand->add_flag("--csv", m_pOptions->bCsv, "Print comma-separated values");
    m_pCommand->add_flag("--json", m_pOptions->bJson, "Print JSON")->excludes(pCsv);
    pCsv->excludes(pMaxPower);
    m_pCommand->footer(FIT_EXAMPLES);
}

FitCommand::~FitCommand() = default;

bool FitCommand::parsed() const
{
    return m_pCommand->parsed();
}

int FitCommand::run() const
{
    const Options& options = *m_pOptions;
    std::vector<AmplifierSweep> sweeps = readAmplifierSweeps(options.sFile);
    select(sweeps, options.sFile, "--frequency", options.frequencyMhz, &SweepPlace::frequencyMhz);
    select(sweeps, options.sFile, "--supply", options.supplyVolts, &SweepPlace::supplyVolts);
    const std::vector<FittedSweep> fits = fitAll(sweeps, options.sFile);

    std::string sText;
    if (options.bJson) {
        sText = jsonText(fits, options.maxPowerDbm);
    }
    else {
        const Table table = tableOf(fits);
        sText = options.bCsv ? csvText(table) : alignedText(table);
        sText += options.maxPowerDbm ? settingsText(fits, *options.maxPowerDbm) : "";
    }
    fmt::print("{}", sText);
    return eEXIT_OK;
}
