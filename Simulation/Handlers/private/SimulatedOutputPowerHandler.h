/** @file
 * An output power handler in front of a simulated transmitter.
 */
#pragma once

#include "Control/OutputPowerHandler/IOutputPowerHandler.h"
#include "Simulation/Handlers/ISimulatedTransmitter.h"
#include "Simulation/Handlers/private/FaultInjector.h"
#include "Simulation/Handlers/private/PublishedInterface.h"
#include "Simulation/Transmitter/Transmitter.h"

#include <array>
#include <atomic>
#include <optional>

/**
 * The transmitter of one channel; powers in hundredths of a decibel.
 *
 * Steps of the transmitter, and from which steps each is taken:
 * | step | what it does                                                    | taken after   |
 * |------|-----------------------------------------------------------------|---------------|
 * | 2    | powers the chain, muted; a chain that is powered starts anew    | any           |
 * | 3    | enables the carrier                                             | 2, 3          |
 * | 4    | as 3; the chain is settled, traffic modulation may be enabled   | 3, 4          |
 * | 0    | mutes the power amplifier                                       | 0, 2, 3, 4    |
 * | 1    | takes the chain's power away, which is also how it starts       | 0, 1          |
 *
 * An operation that hardware would refuse gives EAF_FAILED, changes nothing and is counted. Nothing here locks or,
 * after construction, allocates; setProductionTestSettings() and refusedCalls() may be called from other threads.
 */
class SimulatedOutputPowerHandler final : public IOutputPowerHandler, public ISimulatedTransmitter
{
public:
    /** A transmitter with default parameters and a seed of the channel's own. */
    explicit SimulatedOutputPowerHandler(unsigned int nChannel);

    /** Publishes the handler under its channel's name. */
    EAFResult initialize();
    EAFResult uninitialize() { return m_published.withdraw(); }

    // The table's operations; see IOutputPowerHandlerCStruct.

    /** Refused while the chain has no power, and beyond what production test may ask for. */
    EOPHResult setOutputPower(std::int32_t nPctrl, std::int32_t nPtarget);
    EOPHResult setTxState(std::int32_t nStep);
    EOPHResult setProductionTestSettings(ERfDetectorLoopMode eLoopMode);
    /** Reads 0 for an amplifier that the chain does not have. */
    EOPHResult getReducedGainFromAmplifier(std::uint32_t nAmplifier, std::int32_t* pReducedGain);
    /**
     * @param[out] pReading the detector's latest reading, -10000 before the first; nothing is read anew, so that a log
     *                      that is switched on does not change a run
     */
    EOPHResult getTxPowerReadings(std::int32_t* pReading, std::int32_t* pIfPower, std::int32_t* pRfGain);
    /**
     * In the normal loop mode, the state says how far the control power is above the detector's floor. A closed loop
     * is one over the detector's best part whatever the power, an open one does not trust the detector at all.
     */
    EOPHResult calculateDetectorUsage(std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode,
                                      EOPHDetectorState* pDetectorState);
    /** Reads the detector, or the control power itself in the open loop mode of setProductionTestSettings(). */
    EOPHResult getPmeasured(std::int32_t* pPmeasured);
    EOPHResult setZembraMlmTrafTx(bool bEnable);
    EOPHResult getPctrlLimits(std::int32_t* pLower, std::int32_t* pUpper);

    /** Goes back to the normal loop mode as well; faults and the count of refused calls stay. */
    void configure(const TransmitterParameters& parameters, std::uint64_t nSeed) override;
    void change(const TransmitterParameters& parameters) override { m_transmitter.change(parameters); }
    void setAmbientTemperature(double degreesCelsius) override { m_transmitter.setAmbientTemperature(degreesCelsius); }
    void setFrequencyMhz(double frequencyMhz) override { m_transmitter.setFrequencyMhz(frequencyMhz); }
    void advance(double seconds) override { m_transmitter.advance(seconds); }
    void setFault(EHandlerOperation eOperation, const HandlerFault& fault) override;
    void countDelays() override { m_faults.countDelays(); }
    std::uint64_t takeDelayUs() override { return m_faults.takeDelayUs(); }
    std::optional<std::int32_t> givenLowerLimit() const override { return m_nGivenLowerLimit; }
    const ChainSetting& chain() const override { return m_transmitter.setting(); }
    double outputPowerDbm() const override { return m_transmitter.outputPowerDbm(); }
    std::uint64_t refusedCalls() const override { return m_nRefusedCalls; }

private:
    /** What an operation has read last; empty at first. */
    template <std::size_t COUNT> struct Latest
    {
        std::array<std::int32_t, COUNT> values{};
        bool bRead = false;
    };

    /** Everything read so far. */
    struct LatestReadings
    {
        std::array<Latest<1>, MAX_AMPLIFIERS> reducedGain;
        Latest<3> txPower;
        Latest<1> detectorState;
        Latest<1> pMeasured;
        Latest<2> pctrlLimits;
    };

    void buildTable();
    EOPHResult refuse();
    EOPHResult applyOutputPower(std::int32_t nPctrl);
    EOPHResult applyTxStep(std::int32_t nStep);
    std::int32_t readDetector();
    EOPHDetectorState detectorStateAt(std::int32_t nPctrl, ERfDetectorLoopMode eLoopMode) const;

    template <class TApply> EOPHResult set(EHandlerOperation eOperation, std::int32_t nValue, TApply apply);
    template <std::size_t COUNT, class TRead>
    EOPHResult read(EHandlerOperation eOperation, Latest<COUNT>& latest, TRead readNow);

    const unsigned int m_nChannel;
    IOutputPowerHandlerCStruct m_cStruct{};
    Transmitter m_transmitter;
    FaultInjector m_faults;
    LatestReadings m_latest;
    std::int32_t m_nTxStep;
    std::int32_t m_nPctrl = 0;
    std::int32_t m_nDetectorReading = 0;
    std::optional<std::int32_t> m_nGivenLowerLimit;
    std::atomic<std::int32_t> m_nLoopMode = eRF_DETECTOR_LOOP_MODE_NORMAL;
    std::atomic<std::uint64_t> m_nRefusedCalls = 0;
    PublishedInterface m_published; // withdrawn before the rest goes
};
