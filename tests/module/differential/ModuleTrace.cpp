// The trace and the module base that the module imports: lines of the current environment's log.
#include "Platform/Trace/GtTrace.h"
#include "Platform/Trace/KmtTrace.h"
#include "tests/module/differential/ModulePlatform.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <streambuf>

GT_TraceObject OPC_trace = {7, "OPC"};
GT_TraceObject TI_trace = {7, "TI"};

using Differential::EventLog;
using Differential::ModulePlatform;

namespace
{
EventLog& eventLog()
{
    return ModulePlatform::current().environment().log();
}

/** Hands a message to the log; a message not ended by a newline and a flush shows in the line after it. */
class LogBuffer : public std::streambuf
{
public:
    void begin()
    {
        if (m_bOpen) {
            eventLog().line("<not flushed>");
        }
        m_bOpen = true;
    }

    void reset() { m_bOpen = false; }

protected:
    std::streamsize xsputn(const char* pText, std::streamsize nCount) override
    {
        eventLog().add(std::string_view(pText, static_cast<std::size_t>(nCount)));
        return nCount;
    }

    int_type overflow(int_type nCharacter) override
    {
        const char cCharacter = traits_type::to_char_type(nCharacter);
        eventLog().add(std::string_view(&cCharacter, 1));
        return traits_type::not_eof(nCharacter);
    }

    int sync() override
    {
        m_bOpen = false;
        return 0;
    }

private:
    bool m_bOpen = false;
};

LogBuffer s_buffer;
// Its format is kept from message to message, so that one left changed shows in the next.
std::ostream s_stream{&s_buffer};
std::string s_sRecord;

long phase(const char* pName)
{
    eventLog().line("ModuleInterface::", pName);
    return EAF_OK;
}
} // namespace

// What one sequence leaves changed is no matter of the next.
void ModulePlatform::resetTrace()
{
    s_buffer.reset();
    s_stream.copyfmt(std::ostream(nullptr));
    s_stream.clear();
}

KmtTrace::KmtTrace(const char* pGroup, int) : m_pGroup(pGroup), m_pState(nullptr) {}
KmtTrace::~KmtTrace() = default;

std::ostream& KmtTrace::beginLogMsg(int nLevel, const char* pSourcePath, int)
{
    s_buffer.begin();
    eventLog().add("trace ", nLevel, " ", m_pGroup, " ", pSourcePath, ": ");
    return s_stream;
}

extern "C" int CPlxTraceHandler_DmLevel2GtLevel(unsigned long nCode)
{
    // Of their own, so that a code taken for another shows.
    return nCode == 0x800 ? 5 : nCode == 0xA102 ? 2 : 1;
}

extern "C" void GT_beginImpl(GT_TraceObject* pObject, int nLevel, const char* pSourcePath, int)
{
    eventLog().add(pObject->pName, " ", nLevel, " ", pSourcePath, ": ");
    s_sRecord.clear();
}

extern "C" void GT_rawprintf(const char* pFormat, ...)
{
    char sText[256];
    std::va_list arguments;
    va_start(arguments, pFormat);
    const int nLength = std::vsnprintf(sText, sizeof sText, pFormat, arguments);
    va_end(arguments);
    s_sRecord.append(sText, std::min<std::size_t>(static_cast<std::size_t>(nLength), sizeof sText - 1));
}

extern "C" void GT_endImpl(void)
{
    eventLog().add(s_sRecord);
}

ModuleInterface::ModuleInterface(unsigned int nModuleNumber, const char* pName, unsigned int nChannel,
                                 unsigned int nInstance, const unsigned long* pPhaseFilter, unsigned int nPhaseCount)
    : m_nModuleNumber(nModuleNumber), m_pName(pName), m_nModuleChannel(nChannel), m_nInstance(nInstance),
      m_pPhaseFilter(pPhaseFilter), m_nPhaseCount(nPhaseCount)
{
    eventLog().add("ModuleInterface ", nModuleNumber, " ", pName, " ", nChannel, " ", nInstance);
    for (unsigned int i = 0; i < nPhaseCount; ++i) {
        eventLog().add(" ", pPhaseFilter[i]);
    }
    eventLog().line();
}

ModuleInterface::~ModuleInterface()
{
    eventLog().line("~ModuleInterface");
}

long ModuleInterface::onPhaseActivation(unsigned long, ECallbackPriority)
{
    return phase("onPhaseActivation");
}

long ModuleInterface::onModuleInit()
{
    return phase("onModuleInit");
}

long ModuleInterface::onPhaseModuleStorageObjectsRetreived()
{
    return phase("onPhaseModuleStorageObjectsRetreived");
}

long ModuleInterface::onPhasePostFrameformatLoad()
{
    return phase("onPhasePostFrameformatLoad");
}

long ModuleInterface::onPhaseEndFrameformatLoad()
{
    return phase("onPhaseEndFrameformatLoad");
}

long ModuleInterface::onPhaseStart()
{
    return phase("onPhaseStart");
}

long ModuleInterface::onPhaseStop()
{
    return phase("onPhaseStop");
}

long ModuleInterface::onPhaseFrameformatLoad()
{
    return phase("onPhaseFrameformatLoad");
}

long ModuleInterface::onPhasePreFrameformatLoad()
{
    return phase("onPhasePreFrameformatLoad");
}

long ModuleInterface::onPhaseSetRadioChannelNearEndFinished()
{
    return phase("onPhaseSetRadioChannelNearEndFinished");
}
