/** @file
 * Fixture of a controller connected to recording handlers.
 */
#pragma once

#include "tests/support/ExposedController.h"
#include "tests/support/FakeHandlers.h"
#include "tests/support/RecordingObservers.h"
#include "tests/support/RecordingOutputPowerHandler.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/** Records of calls, or texts of traces. */
using Texts = std::vector<std::string>;

inline constexpr const char* CONTROLLER_SOURCE_PATH = "Control/OutputPowerController/private/OutputPowerController";

/**
 * Publishes the handlers, builds a controller and connects it; records begin after that. Every message that a test's
 * code traces must have been ended rightly.
 */
class ControllerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_platform.reset();
        build(0);
    }

    void TearDown() override
    {
        EXPECT_TRUE(m_platform.areTracesWellFormed());
        m_pController.reset();
        m_platform.reset();
    }

    /** Builds a controller for a channel in place of the one before, connects it and forgets the records. */
    void build(unsigned int nChannel)
    {
        m_pController.reset();
        m_platform.script().temperatureObservers.clear();
        m_frequency.m_observers.clear();
        publishHandlers(nChannel);
        m_pController = std::make_unique<ExposedController>(nChannel);
        ASSERT_EQ(m_pController->onModuleInit(), EAF_OK);
        m_platform.clearRecords();
    }

    void publishHandlers(unsigned int nChannel)
    {
        const std::string sChannel = std::to_string(nChannel);
        m_platform.publish(("IOutputPowerHandler." + sChannel).substr(0, 21), &m_handler);
        m_platform.publish(nChannel == 0 ? "IFrequencyHandler_Tx" : "IFrequencyHandler_Tx_" + sChannel, &m_frequency);
        m_platform.publish("ITemperatureHandler", &m_temperature);
    }

    /** Puts the controller into the closed loop with these powers, without any call. */
    void closeLoop(int nPctrl, int nPctrlMin, int nPctrlMax)
    {
        m_pController->m_eOPCState = eOPC_TX_ON;
        m_pController->m_ePreviousOPCState = eOPC_TX_ON;
        m_pController->m_eTxPowerActualStatus = eTX_POWER_ACTUAL_ON;
        m_pController->m_nPctrl = nPctrl;
        m_pController->m_nPctrlMin = nPctrlMin;
        m_pController->m_nPctrlMax = nPctrlMax;
    }

    /** Puts the controller into a state of the machine as if it had been there at the step before. */
    void enter(EOPCState eState)
    {
        m_pController->m_eOPCState = eState;
        m_pController->m_ePreviousOPCState = eState;
    }

    ExposedController& controller() { return *m_pController; }

    /** @return the call records so far, which are forgotten */
    Texts takeCalls()
    {
        Texts calls = m_platform.calls();
        m_platform.clearRecords();
        return calls;
    }

    RecordingPlatform& m_platform = RecordingPlatform::get();
    RecordingOutputPowerHandler m_handler;
    FakeFrequencyHandler m_frequency;
    FakeTemperatureHandler m_temperature;
    std::unique_ptr<ExposedController> m_pController;
};
