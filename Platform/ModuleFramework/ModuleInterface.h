/** @file
 * The base class of every module that the platform drives through its phases.
 */
#pragma once

#include "Platform/EAFResult.h"

/** Order in which a module wants to be called back within a phase; handed through by the platform. */
enum ECallbackPriority
{
    eCALLBACK_PRIORITY_LOW = 0,    /**< lowest */
    eCALLBACK_PRIORITY_NORMAL = 1, /**< usual */
    eCALLBACK_PRIORITY_HIGH = 2    /**< highest */
};

/**
 * A module, neither copied nor moved. The platform calls the phase operations of the phases in the module's filter, all
 * in one thread. The Linux unit drives four of them, by number: 5, 11 and 20 in this order at start, 16 at stop.
 *
 * Each phase operation returns EAF_OK or a failure; the base class does nothing and returns EAF_OK.
 */
class EAF_PUBLIC ModuleInterface
{
public:
    /**
     * @param nModuleNumber the platform's number of this kind of module
     * @param pName name of the module; must be a text that outlives the module
     * @param nChannel radio channel that the module serves
     * @param nInstance the platform's instance number
     * @param pPhaseFilter numbers of the phases that the module takes part in; must outlive the module
     * @param nPhaseCount how many numbers the filter holds
     */
    ModuleInterface(unsigned int nModuleNumber, const char* pName, unsigned int nChannel, unsigned int nInstance,
                    const unsigned long* pPhaseFilter, unsigned int nPhaseCount);
    virtual ~ModuleInterface();

    ModuleInterface(const ModuleInterface&) = delete;
    ModuleInterface& operator=(const ModuleInterface&) = delete;

    /**
     * A phase begins. Not called by the Linux unit.
     * @param nPhase number of the phase
     * @param ePriority order of the call
     * @return EAF_OK or a failure
     */
    virtual long onPhaseActivation(unsigned long nPhase, ECallbackPriority ePriority);

    /** Phase 5: all modules are published; find those needed. @return EAF_OK or a failure */
    virtual long onModuleInit();

    // The platform's spelling of the phase, which every module overrides.
    /** Phase 11: the variables of the module storage can be read. @return EAF_OK or a failure */
    virtual long onPhaseModuleStorageObjectsRetreived();

    /** Phase 20: the frame format's variables can be read. @return EAF_OK or a failure */
    virtual long onPhasePostFrameformatLoad();

    /** The frame format is complete. Not called by the Linux unit. @return EAF_OK or a failure */
    virtual long onPhaseEndFrameformatLoad();

    /** The unit starts. Not called by the Linux unit. @return EAF_OK or a failure */
    virtual long onPhaseStart();

    /** Phase 16: the unit stops; no regulation follows. @return EAF_OK or a failure */
    virtual long onPhaseStop();

    /** The frame format is loaded. Not called by the Linux unit. @return EAF_OK or a failure */
    virtual long onPhaseFrameformatLoad();

    /** The frame format is about to be loaded. Not called by the Linux unit. @return EAF_OK or a failure */
    virtual long onPhasePreFrameformatLoad();

    /** The near end's radio channel is set. Not called by the Linux unit. @return EAF_OK or a failure */
    virtual long onPhaseSetRadioChannelNearEndFinished();

    /** @return the platform's number of this kind of module */
    unsigned int getModuleNumber() const { return m_nModuleNumber; }

    /** @return the module's name; not owned by the caller, valid while the module lives */
    const char* getModuleName() const { return m_pName; }

    /** @return the radio channel that the module serves */
    unsigned int getModuleChannel() const { return m_nModuleChannel; }

    /** @return the platform's instance number */
    unsigned int getModuleInstance() const { return m_nInstance; }

    /**
     * @param nPhase number of a phase
     * @return whether the module takes part in it
     */
    bool isInPhaseFilter(unsigned long nPhase) const;

private:
    unsigned int m_nModuleNumber;
    const char* m_pName;
    unsigned int m_nModuleChannel;
    unsigned int m_nInstance;
    const unsigned long* m_pPhaseFilter;
    unsigned int m_nPhaseCount;
};
