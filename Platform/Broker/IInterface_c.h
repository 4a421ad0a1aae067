/** @file
 * A brokered interface that C callers can use as well.
 */
#pragma once

#include "Platform/Broker/IInterface.h"

/** A brokered interface with a C function table beside its virtual operations. */
class EAF_PUBLIC IInterface_c : public virtual IInterface
{
public:
    ~IInterface_c() override = default;

    IInterface_c(const IInterface_c&) = delete;
    IInterface_c& operator=(const IInterface_c&) = delete;
    IInterface_c(IInterface_c&&) = delete;
    IInterface_c& operator=(IInterface_c&&) = delete;

    /**
     * @return the interface's C function table, whose first member is the object pointer to pass back;
     *         owned by the object and the same at every call
     */
    virtual void* getCStruct() { return m_pCStruct; }

protected:
    /** Begins without a table. */
    IInterface_c() = default;

    void* m_pCStruct = nullptr; /**< set by the class that has the table; not owned */
};
