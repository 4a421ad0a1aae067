/** @file
 * The recording platform's hold on the trace messages that the calling thread has begun.
 */
#pragma once

/** Messages under construction in the calling thread. */
class TraceDoubles
{
public:
    /** Records messages that were begun and not ended, marked as such. */
    static void closeOpenMessages();

    /** Gives the calling thread's stream its first format back, which messages may have left changed. */
    static void resetFormat();
};
