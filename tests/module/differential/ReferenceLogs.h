/** @file
 * The two logs of a channel and their commands, written a second time.
 */
#pragma once

#include "tests/module/differential/Coverage.h"
#include "tests/module/differential/Environment.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Differential
{
/** What a planted difference changes; as it stands it is the behaviour. */
struct Constants
{
    std::int64_t nRampErrorBound = 100;
    std::int64_t nRounding = 50;
    std::size_t nTransientSamples = 200;
    std::int64_t nModeKeptForTwo = 0;
};

/** Statistics, samples and commands; every line that they trace goes to the environment's log. */
class ReferenceLogs
{
public:
    static constexpr std::size_t QUANTITIES = 11;
    using Quantities = std::array<std::int64_t, QUANTITIES>;
    using Sample = std::array<std::int64_t, 5>;

    ReferenceLogs(Environment& environment, Coverage& coverage, std::uint32_t nChannel, const Constants& constants);

    void initialize();
    void uninitialize();
    void restart();

    bool isOpcLogActive() const { return m_bOpcActive; }
    bool isTransientLogActive() const { return m_bTransientActive; }
    void writeOpc(const Quantities& quantities);
    void addSample(const Sample& sample);
    void writeInitialGain(std::int64_t nGain) { m_nInitialGain = nGain; }

    /** Carry out the option of an index and write the response as a line. */
    void opcCommand(std::size_t nOption);
    void transientCommand(std::size_t nOption);

private:
    /** One quantity since the first sample that counts; nothing before it. */
    struct Statistics
    {
        std::int64_t nMin = 0;
        std::int64_t nActual = 0;
        std::int64_t nMax = 0;
    };

    void resetOpc();
    void trace(int nLevel, const std::string& sText);
    void testTrace(std::int32_t nLevel, const char* pCode, const std::string& sText);
    void respond(const std::string& sResponse) { m_environment.log().line("response ", sResponse); }
    std::string opcResponse() const;
    std::string transientResponse() const;
    void dumpOpc();
    void dumpSamples();

    Environment& m_environment;
    Coverage& m_coverage;
    std::string m_sChannel;
    std::string m_sChannelId; // the response's numbers are signed
    Constants m_constants;
    bool m_bOpcActive = false;
    bool m_bTransientActive = false;
    bool m_bFirst = true;
    std::array<Statistics, QUANTITIES> m_statistics{};
    std::int64_t m_nInitialGain = 0;
    std::vector<Sample> m_samples;
};

/** @return the name that a channel's interface is published under */
std::string channelName(const std::string& sBase, std::uint32_t nChannel);
} // namespace Differential
