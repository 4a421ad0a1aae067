#include "tests/module/log/LogTest.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <random>

namespace
{
constexpr std::size_t QUANTITIES = 11;
using Quantities = std::array<int, QUANTITIES>;

/** The statistics, kept as the list of samples that they cover. */
class StatisticsModel
{
public:
    void write(const Quantities& sample)
    {
        if (m_bPending || !m_bActive) {
            m_samples.clear();
        }
        m_bPending = m_bPending && !m_bActive;
        m_samples.push_back(sample);
    }

    void reset()
    {
        m_samples.clear();
        m_nInitialGain = 0;
        m_bPending = true;
    }

    void setActive(bool bActive) { m_bActive = bActive; }
    void setInitialGain(int nGain) { m_nInitialGain = nGain; }

    std::array<std::int32_t, 34> fields() const
    {
        std::array<std::int32_t, 34> anField{};
        anField[15] = m_nInitialGain;
        for (std::size_t i = 0; i < QUANTITIES && !m_samples.empty(); ++i) {
            const auto less = [i](const Quantities& a, const Quantities& b) { return a[i] < b[i]; };
            const auto [least, most] = std::minmax_element(m_samples.begin(), m_samples.end(), less);
            // Triples first, then the amplifiers' three arrays.
            const std::size_t nFirst = i < 5 ? 3 * i : 11 + i;
            const std::size_t nStride = i < 5 ? 1 : 6;
            anField[nFirst] = (*least)[i];
            anField[nFirst + nStride] = m_samples.back()[i];
            anField[nFirst + 2 * nStride] = (*most)[i];
        }
        return anField;
    }

private:
    std::vector<Quantities> m_samples;
    int m_nInitialGain = 0;
    bool m_bActive = false;
    bool m_bPending = true;
};

class OpcLogModelTest : public LogTest
{
protected:
    int value()
    {
        switch (m_random() % 4) {
        case 0:
            return static_cast<int>(m_random() % 7) - 3;
        case 1:
            return static_cast<int>(m_random() % 20001) - 10000;
        case 2:
            return m_random() % 2 == 0 ? INT_MIN : INT_MAX;
        default:
            return static_cast<int>(static_cast<std::uint32_t>(m_random()));
        }
    }

    void write()
    {
        Quantities s{};
        std::generate(s.begin(), s.end(), [this] { return value(); });
        m_log.writeToOpcLog(s[0], s[1], s[2], s[3], s[4], s[5], s[6], s[7], s[8], s[9], s[10]);
        m_model.write(s);
    }

    void reset()
    {
        m_log.resetOpcLog();
        m_model.reset();
    }

    void setActive(bool bActive)
    {
        m_log.setOpcLogActive(bActive);
        m_model.setActive(bActive);
    }

    void restart()
    {
        m_log.logsRestart();
        if (m_log.isOpcLogActive()) {
            m_model.reset();
        }
    }

    void act()
    {
        const std::uint64_t nChoice = m_random() % 40;
        if (nChoice == 0) {
            reset();
        }
        else if (nChoice == 1) {
            restart();
        }
        else if (nChoice < 5) {
            setActive(m_random() % 2 == 0);
        }
        else if (nChoice < 7) {
            const int nGain = value();
            m_log.writeInitialTxRfGainToOpcLog(nGain);
            m_model.setInitialGain(nGain);
        }
        else {
            write();
        }
    }

    std::array<std::int32_t, 34> read()
    {
        OutputPowerControlLog::OpcLog log;
        m_log.readFromOpcLog(&log);
        std::array<std::int32_t, 34> anField{};
        std::memcpy(anField.data(), &log, sizeof log);
        return anField;
    }

    std::mt19937_64 m_random{20260101}; // NOLINT(cert-msc32-c,cert-msc51-cpp): the same sequences at every run
    StatisticsModel m_model;
};

TEST_F(OpcLogModelTest, StatisticsAreThoseOfTheSamplesThatCount)
{
    for (int nSequence = 0; nSequence < 200; ++nSequence) {
        reset();
        setActive(m_random() % 2 == 0);
        for (int nStep = 0; nStep < 300; ++nStep) {
            act();
            ASSERT_EQ(read(), m_model.fields()) << "sequence " << nSequence << ", step " << nStep;
        }
    }
}
} // namespace
