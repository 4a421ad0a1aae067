/** @file
 * Fixture of the OPC log's command.
 */
#pragma once

#include "tests/module/log/LogTest.h"

#include <cstring>

inline const std::string OPC_STANDARD_RESPONSE = "{StandardResponse: \"OK\"}";

/** One object of the response to a read. */
struct ObjectText
{
    std::string sName;
    int nActual;
    int nMin;
    int nMax;

    /** @param nMissingMember member to leave out, from 0 */
    std::string text(int nMissingMember = -1) const
    {
        const Texts members = {"ObjectName: \"" + sName + "\"", "ActualValue: " + std::to_string(nActual),
                               "MinValue: " + std::to_string(nMin), "MaxValue: " + std::to_string(nMax)};
        std::string sMembers;
        for (int i = 0; i < 4; ++i) {
            if (i != nMissingMember) {
                sMembers += (sMembers.empty() ? "" : ", ") + members[static_cast<std::size_t>(i)];
            }
        }
        return inBraces(sMembers);
    }
};

/** Sends requests to the OPC log. */
class OpcLogCommandTest : public LogTest
{
protected:
    /** @return the answer's text */
    std::string manage(const std::string& sOption)
    {
        return manageWatched(sOption, [](const XmlRpcCalls&) {});
    }

    /** @return the answer's text; @p watch sees the calls made while the request was served */
    std::string manageWatched(std::string sOption, const std::function<void(const XmlRpcCalls&)>& watch)
    {
        XMLRPC_VALUE xAnswer = nullptr;
        {
            XmlRpcCalls calls;
            if (m_prepare) {
                m_prepare(calls);
            }
            xAnswer = OutputPowerControlLog::staticManageOpcLog(m_log.handle(), sOption.data());
            watch(calls);
        }
        return takeText(xAnswer);
    }

    /** Fills the statistics: every number differs from every other. */
    void fill()
    {
        m_log.setOpcLogActive(true);
        m_log.resetOpcLog();
        m_log.writeToOpcLog(11, 12, 13, 14, 15, 161, 162, 163, 164, 165, 166);
        m_log.writeToOpcLog(-11, -12, -13, -14, -15, -161, -162, -163, -164, -165, -166);
        m_log.writeToOpcLog(1, 2, 3, 4, 5, 61, 62, 63, 64, 65, 66);
        m_log.writeInitialTxRfGainToOpcLog(42);
    }

    /** @return the twelve objects of what fill() wrote */
    static std::vector<ObjectText> filledObjects()
    {
        std::vector<ObjectText> objects = {{"TxRfPowerSet", 1, -11, 11},      {"TxRfPowerTarget", 2, -12, 12},
                                           {"TxRfDetectedPower", 3, -13, 13}, {"TxIfPower", 4, -14, 14},
                                           {"TxRfGain", 5, -15, 15},          {"TxRfGainInitial", 42, 42, 42}};
        for (int i = 1; i <= 6; ++i) {
            objects.push_back({"GainReductionAmplifier" + std::to_string(i), 60 + i, -160 - i, 160 + i});
        }
        return objects;
    }

    /** @return the text of the array with its first objects */
    static std::string arrayText(const std::string& sName, std::size_t nObjects, std::size_t nCutObject = 0,
                                 int nMissingMember = -1)
    {
        const std::vector<ObjectText> objects = filledObjects();
        std::string sObjects;
        for (std::size_t i = 1; i <= nObjects; ++i) {
            sObjects += (i == 1 ? "" : ", ") + objects[i - 1].text(i == nCutObject ? nMissingMember : -1);
        }
        return sName + ": [" + sObjects + "]";
    }

    bool isZero() const
    {
        const OutputPowerControlLog::OpcLog zeros{};
        return std::memcmp(&m_log.m_opcLog, &zeros, sizeof zeros) == 0;
    }

    std::function<void(XmlRpcCalls&)> m_prepare; /**< scripts the calls */
};

inline const std::string ARRAY_OF_CHANNEL_3 = "Channel.3.TxOutputPowerControlLog";
