#include "Unit/Simulator/VirtualRun.h"

#include "Unit/Simulator/private/RunEngine.h"

class VirtualRun::Implementation final : public RunEngine
{
public:
    using RunEngine::RunEngine;
};

VirtualRun::VirtualRun(const Scenario& scenario, int nTraceLevel)
    : m_pImplementation(std::make_unique<Implementation>(scenario, nTraceLevel))
{}

VirtualRun::~VirtualRun() = default;

std::uint64_t VirtualRun::totalSteps() const
{
    return m_pImplementation->totalSteps();
}

std::uint64_t VirtualRun::stepsDone() const
{
    return m_pImplementation->stepsDone();
}

bool VirtualRun::proceed(std::uint64_t nMaxSteps, IStepReceiver* pReceiver)
{
    return m_pImplementation->proceed(nMaxSteps, pReceiver);
}

RunMeasures VirtualRun::measures() const
{
    return m_pImplementation->measures();
}

const ViolationStore& VirtualRun::violations() const
{
    return m_pImplementation->violations();
}

std::vector<std::string> VirtualRun::warnings() const
{
    return m_pImplementation->warnings();
}
