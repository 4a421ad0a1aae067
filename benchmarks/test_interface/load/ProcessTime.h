/** @file
 * Processor time of processes.
 */
#pragma once

#include <sys/types.h>

/** @return seconds that a process, all its threads and its ended children ran. @throws std::runtime_error */
double processorSecondsOf(pid_t process);

/** @return seconds that this process ran */
double ownProcessorSeconds();
