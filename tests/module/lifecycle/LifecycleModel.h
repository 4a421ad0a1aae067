/** @file
 * What each moment of a module's life does with the platform, as the behaviour has it.
 */
#pragma once

#include "tests/module/lifecycle/Surroundings.h"

#include <map>
#include <set>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

/** What is done with a module, or around it. */
enum class EMoment
{
    Construct,
    Initialize,
    ModuleInit,       /**< phase 5 */
    StorageObjects,   /**< phase 11 */
    FrameFormat,      /**< phase 20 */
    Stop,             /**< phase 16 */
    Regulate,         /**< while off: a handler is not needed */
    NullHandles,      /**< all four entry points with a null handle */
    PowerHandlerGoes, /**< or comes back */
    Uninitialize,
    Destruct
};

const char* nameOf(EMoment eMoment);

/** What is to be seen of a moment. */
struct Seen
{
    long nResult = EAF_OK;
    Texts calls;  /**< of the platform and the handlers */
    Texts traces; /**< level and text */

    bool operator==(const Seen&) const = default;
};

/** A platform with the modules in it; a module is known by its number in the order of construction. */
class LifecycleModel
{
public:
    explicit LifecycleModel(const Surroundings& surroundings) : m_around(surroundings) {}

    /** @param nModule number of the module; a new one is constructed for its channel */
    Seen live(EMoment eMoment, std::size_t nModule, unsigned int nChannel);

    const std::set<std::string>& interfaces() const { return m_interfaces; }
    const std::set<std::string>& records() const { return m_records; }
    /** @return numbers of the registered modules, in order */
    const std::vector<std::size_t>& modules() const { return m_modules; }

private:
    struct Module
    {
        unsigned int nChannel = 0;
        bool bConnected = false;
        bool bBandwidthTable = false;
        bool bFrequencyTable = false;
        int nSpacingKhz = 0;
        bool bHasStepped = false;
    };

    Seen construct(std::size_t nModule, unsigned int nChannel);
    Seen destruct(std::size_t nModule);
    Seen initialize(unsigned int nChannel);
    Seen uninitialize(unsigned int nChannel);
    Seen moduleInit(Module& module) const;
    Seen storageObjects(const Module& module) const;
    Seen frameFormat(Module& module) const;
    static Seen regulate(Module& module);
    static Seen nullHandles();

    Surroundings m_around;
    bool m_bPowerHandlerThere = true;
    std::map<std::size_t, Module> m_living;
    std::set<std::string> m_interfaces;
    std::set<std::string> m_records;
    std::vector<std::size_t> m_modules;
};
