/** @file
 * What a unit file says.
 */
#pragma once

#include "Platform/Trace/SystemLogSettings.h"
#include "Simulation/Handlers/HandlerFault.h"
#include "Simulation/Scenario/Profile.h"
#include "Simulation/Transmitter/TransmitterParameters.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/** How often a module is constructed. */
enum class EModuleScope
{
    Channel, /**< once per radio channel */
    Unit     /**< once, as channel 0 */
};

/** A module to load. */
struct ModuleConfiguration
{
    std::string sName;    /**< prefix of the four entry points */
    std::string sLibrary; /**< as written: a bare name or a path */
    EModuleScope eScope = EModuleScope::Channel;
    std::size_t nLine = 0;
};

/** A calibration table to load. */
struct CalibrationConfiguration
{
    std::string sName;
    std::string sFile; /**< path, complete */
};

/** Level of a trace group. */
struct TraceLevelConfiguration
{
    std::string sGroup;
    int nLevel;
};

/** Where trace output goes, and how much of it. */
struct TraceConfiguration
{
    int nDefaultLevel = 1;
    std::vector<TraceLevelConfiguration> levels;
    bool bSystemLog = true;
    SystemLogSettings systemLog;
};

/** The server that test tools talk to. */
struct TestInterfaceConfiguration
{
    bool bEnabled = true;
    std::string sAddress = "127.0.0.1";
    std::uint16_t nPort = 8080; /**< 0 for any that is free */
    std::string sTokenFile;     /**< path, complete; empty for none */
    std::size_t nLine = 0;      /**< of the table, 0 for none */
};

/** What is recorded of a run, and how long it is kept. */
struct RecorderConfiguration
{
    std::string sFile; /**< path, complete; empty for none */
    double stepsHours = 1.0;
    double secondsHours = 24.0;
    double minutesDays = 366.0;
    std::int64_t maxMb = 2048; /**< of 10^6 bytes, the file and its journal together */
};

/** The file that moves requested power, temperature and frequency. */
struct ProfileConfiguration
{
    std::string sFile; /**< path, complete; empty for no profile */
    Profile::Interpolation interpolation;
};

/** Loop gains in percent, one per detector state. */
using GainPercent = std::array<int, 3>;

/** A radio channel. */
struct ChannelConfiguration
{
    unsigned int nNumber = 0;
    int nPowerMode = 1;
    double txPminDbm = -10.0;
    double txPmaxDbm = 30.0;
    double requestedPowerDbm = 10.0; /**< holds when the profile says nothing */
    double frequencyMhz = 5000.0;    /**< holds when the profile says nothing */
    std::optional<GainPercent> gainPercentRamping;
    std::optional<GainPercent> gainPercentOn;
    bool bProductionTest = false;
    int nLoopMode = 0;
    TransmitterParameters transmitter;
    std::uint64_t nSeed = 1;
    std::size_t nLine = 0;
};

/** A fault of a simulated output power handler, switched on while the unit runs. */
struct FaultConfiguration
{
    unsigned int nChannel = 0;
    EHandlerOperation eOperation = EHandlerOperation::GetPmeasured;
    HandlerFault fault;
    double atSeconds = 0.0;           /**< since the run began */
    std::optional<double> forSeconds; /**< cleared after this time; stays when absent */
};

/** Everything that a unit file says; paths in it are complete. */
struct UnitConfiguration
{
    std::string sPath;   /**< of the file itself */
    std::string sFolder; /**< that the file's relative paths start from */
    unsigned int intervalMs = 6;
    int nRealtimePriority = 0;        /**< of the regulation thread; 0 for none */
    double temperatureDegrees = 25.0; /**< holds when the profile says nothing */
    std::vector<ModuleConfiguration> modules;
    std::string sStorageFile; /**< path, complete; empty for none */
    std::vector<CalibrationConfiguration> calibrations;
    TraceConfiguration trace;
    TestInterfaceConfiguration testInterface;
    RecorderConfiguration recorder;
    ProfileConfiguration profile;
    std::vector<ChannelConfiguration> channels;
    std::vector<FaultConfiguration> faults;
};

/** @throws ConfigurationError that names the file, the line or key, and what to do */
UnitConfiguration loadUnitConfiguration(const std::string& sPath);

/**
 * Keeps the first channels of the file and what belongs to them.
 * @param nCount how many to keep; all when empty
 * @throws ConfigurationError when that is none or more than there are
 */
void selectChannels(UnitConfiguration& configuration, std::optional<unsigned int> nCount);

/** @throws ConfigurationError when two channels are the same or would meet the same output power handler */
void checkChannelsAreApart(const UnitConfiguration& configuration);

/** @return the name that a channel's output power handler is published under, cut to what the controller looks up */
std::string outputPowerHandlerName(unsigned int nChannel);

/** @return an interface name as channels publish it: the base name for channel 0, with "_n" for channel n */
std::string channelInterfaceName(const std::string& sBase, unsigned int nChannel);
