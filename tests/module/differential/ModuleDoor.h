/** @file
 * How the controller under comparison is made and ended: linked into the program, or loaded from the built library.
 */
#pragma once

#include "tests/module/differential/Environment.h"
#include "tests/module/differential/Operation.h"

#include <cstdint>
#include <memory>

namespace Differential
{
/** One controller at a time; everything else is done to it through what it publishes. */
class ModuleDoor
{
public:
    ModuleDoor() = default;
    virtual ~ModuleDoor() = default;

    ModuleDoor(const ModuleDoor&) = delete;
    ModuleDoor& operator=(const ModuleDoor&) = delete;

    virtual void construct(std::uint32_t nChannel) = 0;
    virtual void destruct() = 0;
    virtual long initialize() = 0;
    virtual long uninitialize() = 0;

    /** @return whether operations that only the controller's own class has can be carried out */
    virtual bool isPrivate() const = 0;
    /** Carries out such an operation. */
    virtual void apply(const Operation& operation, EventLog& log) = 0;
    /** Sets the monotonic clock that the controller sees. */
    virtual void setTime(Time time) = 0;
};

/** @return the program's own door */
std::unique_ptr<ModuleDoor> openDoor();
} // namespace Differential
