/** @file
 * The base class of every module that the platform drives through its phases.
 */
#pragma once

#include "Platform/EAFResult.h"

/** Order in which a module wants to be called back within a phase; handed through by the platform. */
enum ECallbackPriority
{
    eCALLBACK_PRIORITY_LOW = 0,
    eCALLBACK_PRIORITY_NORMAL = 1,
    eCALLBACK_PRIORITY_HIGH = 2
};

/**
 * A module. The platform calls the phase operations of the phases in the module's filter, all in one thread.
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

    virtual long onPhaseActivation(unsigned long nPhase, ECallbackPriority ePriority);
    virtual long onModuleInit();
    // The platform's spelling of the phase, which every module overrides.
    virtual long onPhaseModuleStorageObjectsRetreived();
    virtual long onPhasePostFrameformatLoad();
    virtual long onPhaseEndFrameformatLoad();
    virtual long onPhaseStart();
    virtual long onPhaseStop();
    virtual long onPhaseFrameformatLoad();
    virtual long onPhasePreFrameformatLoad();
    virtual long onPhaseSetRadioChannelNearEndFinished();

    unsigned int getModuleNumber() const { return m_nModuleNumber; }
    const char* getModuleName() const { return m_pName; }
    unsigned int getModuleChannel() const { return m_nModuleChannel; }
    unsigned int getModuleInstance() const { return m_nInstance; }

    /** @return whether the module takes part in the phase of this number */
    bool isInPhaseFilter(unsigned long nPhase) const;

private:
    unsigned int m_nModuleNumber;
    const char* m_pName;
    unsigned int m_nModuleChannel;
    unsigned int m_nInstance;
    const unsigned long* m_pPhaseFilter;
    unsigned int m_nPhaseCount;
};
