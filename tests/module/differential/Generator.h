/** @file
 * Draws sequences of operations that reach deep into the controller.
 */
#pragma once

#include "tests/module/differential/Draws.h"
#include "tests/module/differential/Operation.h"

#include <cstdint>
#include <initializer_list>

namespace Differential
{
/** The same seed gives the same sequence. */
class Generator : private Draws
{
public:
    /** @param bPrivateDoor whether operations of the controller's own class may be drawn */
    Generator(std::uint64_t nSeed, bool bPrivateDoor) : Draws(nSeed), m_bPrivateDoor(bPrivateDoor) {}

    /** @return the seed's sequence: a start as a unit makes it, mostly, then episodes, at last what can be read */
    Sequence sequence();

private:
    void add(EOperation eKind, std::initializer_list<std::int32_t> arguments = {});
    void start();
    void episode();

    // Episodes.
    void switchOn();
    void rampToTheBound();
    void switchOff();
    void closedLoop();
    void faultOnce();
    void faultForAWhile();
    void outputs();
    void surroundings();
    void rare();
    void logs();
    void fillLogs();
    void delayedSwitchOn();
    void everyday();
    void connectAgain();
    void noise();
    void refuseProductionTest();
    void privateNoise();
    void readAll();

    void regulate(int nTimes);
    std::int32_t target();

    bool m_bPrivateDoor;
    Sequence m_sequence;
    std::int32_t m_nTarget = 0;
    std::int32_t m_nNoiseOneIn = 12;
};
} // namespace Differential
