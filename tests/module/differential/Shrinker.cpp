#include "tests/module/differential/Shrinker.h"

#include <algorithm>
#include <cstdint>

namespace Differential
{
namespace
{
class Shrinker
{
public:
    Shrinker(Sequence sequence, const Shows& shows, unsigned int nTrials)
        : m_sequence(std::move(sequence)), m_shows(shows), m_nTrials(nTrials)
    {}

    Sequence run()
    {
        while (leaveOut() || simplify()) {
        }
        return m_sequence;
    }

private:
    bool take(const Sequence& candidate)
    {
        if (m_nTrials == 0) {
            return false;
        }
        --m_nTrials;
        if (!m_shows(candidate)) {
            return false;
        }
        m_sequence = candidate;
        return true;
    }

    // Large pieces first, then ever smaller ones.
    bool leaveOut()
    {
        bool bShorter = false;
        for (std::size_t nPiece = m_sequence.operations.size(); nPiece > 0; nPiece /= 2) {
            for (std::size_t nFirst = 0; nFirst < m_sequence.operations.size();) {
                Sequence candidate = m_sequence;
                const auto begin = candidate.operations.begin() + static_cast<std::ptrdiff_t>(nFirst);
                const std::size_t nCount = std::min(nPiece, candidate.operations.size() - nFirst);
                candidate.operations.erase(begin, begin + static_cast<std::ptrdiff_t>(nCount));
                if (take(candidate)) {
                    bShorter = true;
                }
                else {
                    nFirst += nPiece;
                }
            }
        }
        return bShorter;
    }

    bool simplify()
    {
        bool bSimpler = false;
        if (m_sequence.nChannel != 0) {
            Sequence candidate = m_sequence;
            candidate.nChannel = 0;
            bSimpler = take(candidate);
        }
        for (std::size_t i = 0; i < m_sequence.operations.size(); ++i) {
            for (std::size_t k = 0; k < argumentsOf(m_sequence.operations[i].eKind); ++k) {
                bSimpler = simplifyArgument(i, k) || bSimpler;
            }
        }
        return bSimpler;
    }

    bool simplifyArgument(std::size_t nOperation, std::size_t nArgument)
    {
        const auto tryValue = [&](std::int64_t nValue) {
            Sequence candidate = m_sequence;
            candidate.operations[nOperation].anArgument[nArgument] = static_cast<std::int32_t>(nValue);
            return take(candidate);
        };
        const auto value = [&]() -> std::int64_t { return m_sequence.operations[nOperation].anArgument[nArgument]; };
        if (value() == 0) {
            return false;
        }
        if (tryValue(0)) {
            return true;
        }
        bool bSimpler = value() < 0 && value() != INT32_MIN && tryValue(-value());
        for (std::int64_t nDelta = value() / 2; nDelta != 0; nDelta /= 2) {
            bSimpler = tryValue(value() - nDelta) || bSimpler;
        }
        return (value() != 1 && value() != -1 && tryValue(value() > 0 ? value() - 1 : value() + 1)) || bSimpler;
    }

    Sequence m_sequence;
    const Shows& m_shows;
    unsigned int m_nTrials;
};
} // namespace

Sequence shrunk(Sequence sequence, const Shows& shows, unsigned int nTrials)
{
    return Shrinker(std::move(sequence), shows, nTrials).run();
}
} // namespace Differential
