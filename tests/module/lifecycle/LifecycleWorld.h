/** @file
 * A process with modules in it, lived through beside the model of it.
 */
#pragma once

#include "tests/module/lifecycle/LifecycleModel.h"
#include "tests/support/FakeHandlers.h"
#include "tests/support/RecordingOutputPowerHandler.h"
#include "tests/support/RecordingPlatform.h"

#include <map>
#include <string>
#include <vector>

class OutputPowerController;

/** Drives modules by their entry points and phases; what a moment does must be what the model says. */
class LifecycleWorld
{
public:
    /** @param channels of the modules that may be constructed, by their numbers */
    LifecycleWorld(const Surroundings& surroundings, std::vector<unsigned int> channels);
    ~LifecycleWorld();

    LifecycleWorld(const LifecycleWorld&) = delete;
    LifecycleWorld& operator=(const LifecycleWorld&) = delete;

    /** @return what differed, expected and actual; empty when nothing did */
    std::string live(EMoment eMoment, std::size_t nModule = 0);

    /**
     * Only does it, for what throws in the middle.
     * @return the entry point's or the phase's result
     */
    long act(EMoment eMoment, std::size_t nModule = 0);

    /** @return the names in both brokers, in order */
    Texts publishedNames() const;
    RecordingPlatform& platform() { return m_platform; }

private:
    void setUpSurroundings();
    void publish(const std::string& sName, EFound eFound, IInterface& interface);
    void togglePowerHandlers();
    OutputPowerController& module(std::size_t nModule) const;
    Seen takeSeen(long nResult) const;
    /** @return how brokers and manager differ from the model's */
    std::string registrationsDiffer() const;

    RecordingPlatform& m_platform = RecordingPlatform::get();
    Surroundings m_around;
    std::vector<unsigned int> m_channels;
    LifecycleModel m_model;
    RecordingOutputPowerHandler m_powerHandler;
    FakeFrequencyHandler m_frequency;
    FakeTemperatureHandler m_temperature;
    PlainInterface m_plain;
    std::map<std::string, IInterface*> m_powerHandlersAway;
    std::vector<void*> m_handles; // by the module's number; null while there is none
};
