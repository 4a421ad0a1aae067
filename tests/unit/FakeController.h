/** @file
 * A controller that is nothing but a C function table.
 */
#pragma once

#include "Control/OutputPowerController/IOutputPowerController_c.h"

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

/** Published in the C broker while it stands; comes on and goes off at the step after the request. */
class FakeController
{
public:
    explicit FakeController(const std::string& sName);
    ~FakeController();

    FakeController(const FakeController&) = delete;
    FakeController& operator=(const FakeController&) = delete;

    EOPCState eState = eOPC_TX_OFF;
    bool bOn = false;
    bool bStaysOn = false; /**< never goes off */
    std::vector<long> requestedPowers;
    std::vector<std::pair<ERequestedTxPowerState, ETxPowerMode>> requests;
    std::map<std::pair<int, int>, long> gains;
    long nInterval = 0;
    std::pair<long, long> limits;
    std::pair<unsigned int, int> productionTest{0, -1};
    long nRegulateResult = 0;
    long nPowerError = 103;
    long nRequestResult = 0;
    std::function<void()> onRegulate;
    IOpcPredictedPctrlObserver* pPredictedObserver = nullptr;
    int nObservers = 0;

private:
    void fillInputs();
    void fillOutputs();
    long regulate(long nPtarget);

    std::string m_sName;
    IOutputPowerControllerCStruct m_table{};
};
