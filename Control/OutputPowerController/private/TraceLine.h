/** @file
 * A line of the controller's trace.
 */
#pragma once

#include <ostream>

/**
 * Passes on what is inserted, unless the platform's stream would swallow it all: a stream that is not good neither
 * formats nor stores anything, so that nothing need be called for it. Every switching step has several such lines.
 */
class TraceLine
{
public:
    explicit TraceLine(std::ostream& stream) : m_pStream(stream.good() ? &stream : nullptr) {}

    template <class TValue> const TraceLine& operator<<(const TValue& value) const
    {
        if (m_pStream != nullptr) {
            *m_pStream << value;
        }
        return *this;
    }

    const TraceLine& operator<<(std::ostream& (*pfnManipulate)(std::ostream&)) const
    {
        if (m_pStream != nullptr) {
            pfnManipulate(*m_pStream);
        }
        return *this;
    }

    const TraceLine& operator<<(std::ios_base& (*pfnManipulate)(std::ios_base&)) const
    {
        if (m_pStream != nullptr) {
            pfnManipulate(*m_pStream);
        }
        return *this;
    }

private:
    std::ostream* m_pStream;
};
