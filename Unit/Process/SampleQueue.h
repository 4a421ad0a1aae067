/** @file
 * The way of samples out of the regulation thread.
 */
#pragma once

#include "Platform/Threads/ThreadRules.h"
#include "Unit/Process/StepSample.h"

#include <boost/lockfree/spsc_queue.hpp>

#include <cstddef>

/** A bounded queue with one thread that writes and one that reads; nobody waits. */
class SampleQueue
{
public:
    /** @param nMaxSamples how many it holds */
    explicit SampleQueue(std::size_t nMaxSamples) : m_queue(nMaxSamples) {}

    /** The regulation thread. @return false when it is full */
    bool push(const StepSample& sample)
    {
        m_writer.check("SampleQueue::push");
        return m_queue.push(sample);
    }

    /** Hands everything to a function, the oldest first. The one thread that reads. @return how many there were */
    template <class TFunction> std::size_t consumeAll(const TFunction& function)
    {
        m_reader.check("SampleQueue::consumeAll");
        return m_queue.consume_all(function);
    }

private:
    boost::lockfree::spsc_queue<StepSample> m_queue;
    [[no_unique_address]] OwnedByThread m_writer;
    [[no_unique_address]] OwnedByThread m_reader;
};
