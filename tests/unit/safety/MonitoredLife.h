/** @file
 * Fixture of a controller between two monitors.
 */
#pragma once

#include "Unit/SafetyMonitor/MonitoredController.h"
#include "Unit/SafetyMonitor/MonitoredHandler.h"
#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/ViolationStore.h"
#include "tests/support/ControllerTest.h"

#include <memory>
#include <string>

/** The real controller between two monitors, in front of a handler that a test scripts. */
class MonitoredLife : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_platform.reset();
        m_platform.publish("IOutputPowerHandler.0", &m_monitoredHandler);
        m_platform.publish("IFrequencyHandler_Tx", &m_frequency);
        m_platform.publish("ITemperatureHandler", &m_temperature);
        m_pController = std::make_unique<ExposedController>(0);
        ASSERT_EQ(m_pController->onModuleInit(), EAF_OK);
        m_pMonitored =
            std::make_unique<MonitoredController>(tableOf<IOutputPowerControllerCStruct>(*m_pController), m_rules);
        m_platform.setQuiet(true);
        m_handler.m_measure = [this] { return m_handler.m_nPctrlSent; };
    }

    void TearDown() override
    {
        m_pMonitored.reset();
        m_pController.reset();
        m_platform.reset();
    }

    template <class TTable> static TTable& tableOf(IInterface_c& interface)
    {
        return *static_cast<TTable*>(interface.getCStruct());
    }

    void steps(int nSteps, int nPtarget)
    {
        for (int nStep = 0; nStep < nSteps; ++nStep) {
            m_pMonitored->regulate(nPtarget);
        }
    }

    std::string reported() const
    {
        std::string sText;
        for (std::size_t nViolation = 0; nViolation < m_store.kept(); ++nViolation) {
            sText += violationText(m_store.at(nViolation)) + "\n" + violationCalls(m_store.at(nViolation));
        }
        return sText;
    }

    /** @return whether only hazards of the specified behaviour were reported */
    bool isCleanButForHazards() const
    {
        std::uint64_t nHazards = 0;
        for (const ESafetyRule eRule : {ESafetyRule::CrossedLimits, ESafetyRule::SwitchOffHeld}) {
            nHazards += m_store.count(eRule);
        }
        return m_store.total() == nHazards;
    }

    RecordingPlatform& m_platform = RecordingPlatform::get();
    RecordingOutputPowerHandler m_handler;
    FakeFrequencyHandler m_frequency;
    FakeTemperatureHandler m_temperature;
    ViolationStore m_store;
    TransmitterRules m_rules{0, EHeardSides::Both, m_store};
    MonitoredHandler m_monitoredHandler{tableOf<IOutputPowerHandlerCStruct>(m_handler), m_rules};
    std::unique_ptr<ExposedController> m_pController;
    std::unique_ptr<MonitoredController> m_pMonitored;
};
