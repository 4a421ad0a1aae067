// The controller of the built library, by its four entry points.
#include "tests/abi/LoadedLibrary.h"
#include "tests/module/differential/ModuleDoor.h"

#include <stdexcept>

namespace Differential
{
namespace
{
class LoadedDoor : public ModuleDoor
{
public:
    void construct(std::uint32_t nChannel) override { m_library.construct(&m_pModule, nChannel); }
    void destruct() override { m_library.destruct(m_pModule); }
    long initialize() override { return m_library.initialize(m_pModule); }
    long uninitialize() override { return m_library.uninitialize(m_pModule); }
    bool isPrivate() const override { return false; }
    void apply(const Operation&, EventLog&) override
    {
        throw std::logic_error("only the linked controller can do that");
    }
    void setTime(Time) override {} // no operation begins the delay, the only thing that looks at the clock

private:
    LoadedLibrary m_library;
    void* m_pModule = nullptr;
};
} // namespace

std::unique_ptr<ModuleDoor> openDoor()
{
    return std::make_unique<LoadedDoor>();
}
} // namespace Differential
