/** @file
 * Makes the operations of a simulated handler misbehave.
 */
#pragma once

#include "Simulation/Handlers/HandlerFault.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <utility>

/** What an operation does at one call. */
enum class EFaultAction
{
    Work,
    Fail,
    Stuck,
    WrongValue
};

/** The faults of all operations. Locks nothing. */
class FaultInjector
{
public:
    void set(EHandlerOperation eOperation, const HandlerFault& fault) { at(eOperation) = fault; }

    /** Makes the chances of intermittent faults anew. */
    void seed(std::uint64_t nSeed) { m_nRandomState = nSeed; }

    /** Lets slow operations be counted instead of waited for. */
    void countDelays() { m_bDelaysCount = true; }

    /** @return microseconds of counted delays since the last time */
    std::uint64_t takeDelayUs() { return std::exchange(m_nDelayUs, 0); }

    /** @return what is read or set instead under EFaultAction::WrongValue */
    std::int32_t wrongValue(EHandlerOperation eOperation) { return at(eOperation).nValue; }

    /** @return what the operation does at this call, after the delay of a slow one */
    EFaultAction next(EHandlerOperation eOperation)
    {
        HandlerFault& fault = at(eOperation);
        switch (fault.eKind) {
        case EHandlerFault::Fail:
            return EFaultAction::Fail;
        case EHandlerFault::FailTimes:
            if (fault.nTimes == 0) {
                return EFaultAction::Work;
            }
            --fault.nTimes;
            return EFaultAction::Fail;
        case EHandlerFault::Stuck:
            return EFaultAction::Stuck;
        case EHandlerFault::WrongValue:
            return EFaultAction::WrongValue;
        case EHandlerFault::Slow:
            if (m_bDelaysCount) {
                m_nDelayUs += fault.delayUs;
            }
            else {
                delay(fault.delayUs);
            }
            return EFaultAction::Work;
        case EHandlerFault::Intermittent:
            return nextChance() < fault.probability ? EFaultAction::Fail : EFaultAction::Work;
        case EHandlerFault::None:
            break;
        }
        return EFaultAction::Work;
    }

private:
    static void delay(unsigned int microseconds)
    {
        constexpr unsigned int perSecond = 1'000'000;
        timespec remaining{static_cast<time_t>(microseconds / perSecond),
                           static_cast<long>(microseconds % perSecond) * 1000};
        while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
            // A signal interrupted it: sleep for what remains.
        }
    }

    /** @return a number from 0 up to 1 that looks random; a generator of its own, so that faults leave noise alone */
    double nextChance()
    {
        constexpr double perStep = 1.0 / 9007199254740992.0; // 2 to the power of -53
        m_nRandomState = m_nRandomState * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(m_nRandomState >> 11U) * perStep;
    }

    HandlerFault& at(EHandlerOperation eOperation) { return m_faults.at(static_cast<std::size_t>(eOperation)); }

    std::array<HandlerFault, static_cast<std::size_t>(EHandlerOperation::Count)> m_faults;
    std::uint64_t m_nRandomState = 1;
    bool m_bDelaysCount = false;
    std::uint64_t m_nDelayUs = 0;
};
