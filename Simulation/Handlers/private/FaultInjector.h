/** @file
 * Makes the operations of a simulated handler misbehave.
 */
#pragma once

#include "Simulation/Handlers/HandlerFault.h"

#include <array>
#include <cerrno>
#include <ctime>

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
            delay(fault.delayUs);
            return EFaultAction::Work;
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

    HandlerFault& at(EHandlerOperation eOperation) { return m_faults.at(static_cast<std::size_t>(eOperation)); }

    std::array<HandlerFault, static_cast<std::size_t>(EHandlerOperation::Count)> m_faults;
};
