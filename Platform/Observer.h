/** @file
 * The observer pattern of the platform: a subject calls back whoever registered with it.
 */
#pragma once

#include "Platform/EAFResult.h"

/**
 * Is told when a subject has changed.
 * @tparam TSubject the class observed
 */
template <class TSubject> class EAF_PUBLIC Observer
{
public:
    /**
     * The subject has changed. Called in the thread that changed it.
     * @param pSubject the subject; valid during the call
     */
    virtual void onChange(TSubject* pSubject) = 0;

protected:
    // Observers are never deleted through this class.
    ~Observer() = default;
};

/**
 * Can be observed.
 * @tparam TSubject the class that derives from this one
 */
template <class TSubject> class EAF_PUBLIC Subject
{
public:
    /**
     * Adds an observer.
     * @param pObserver called from now on; not owned, must outlive the subject's use of it
     * @return EAF_OK, or a failure when it was not taken
     */
    virtual EAFResult registerObserver(Observer<TSubject>* pObserver) = 0;

protected:
    // Subjects are never deleted through this class.
    ~Subject() = default;
};
