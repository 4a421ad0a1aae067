#include "tests/support/RecordingObservers.h"

#include "tests/support/RecordingPlatform.h"

#include <utility>

RecordingObservers::RecordingObservers(std::string sName)
    : m_pctrl{this, [](void* vpThis, unsigned int nChannel, int nPctrl) { record(vpThis, "pctrl", nChannel, nPctrl); }},
      m_ptarget{this, [](void* vpThis, unsigned int nChannel,
                         int nPtarget) { record(vpThis, "ptarget", nChannel, nPtarget); }},
      m_predictedPctrl{this, [](void* vpThis, unsigned int nChannel,
                                int nPredictedPctrl) { record(vpThis, "predictedPctrl", nChannel, nPredictedPctrl); }},
      m_powerMode{this, [](void* vpThis, unsigned int nChannel,
                           ETxPowerMode eMode) { record(vpThis, "powerMode", nChannel, static_cast<int>(eMode)); }},
      m_sName(std::move(sName))
{}

void RecordingObservers::registerWith(IOutputPowerController& controller)
{
    controller.registerPctrlObserver(&m_pctrl);
    controller.registerPtargetObserver(&m_ptarget);
    controller.registerPredictedPctrlObserver(&m_predictedPctrl);
    controller.registerPowerModeObserver(&m_powerMode);
}

void RecordingObservers::record(void* vpThis, const char* pWhat, unsigned int nChannel, int nValue)
{
    RecordingPlatform::get().recordCall([=] {
        return static_cast<const RecordingObservers*>(vpThis)->m_sName + pWhat + "(" + std::to_string(nChannel) + ", " +
               std::to_string(nValue) + ")";
    });
}
