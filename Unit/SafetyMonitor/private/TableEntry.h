/** @file
 * Entries of a monitored table of functions.
 */
#pragma once

/** @return the monitor's function where the real table has one; null where it has none */
template <class TFunction> TFunction* monitoredEntry(TFunction* pReal, TFunction* pMonitored)
{
    return pReal != nullptr ? pMonitored : nullptr;
}
