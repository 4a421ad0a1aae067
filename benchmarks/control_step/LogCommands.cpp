/** @file
 * What the two logs cost: a sample, and "Read" as a value built and written. Beside it the same value by the library
 * alone and by another one; and spdlog's lines, for those of the trace.
 */
#include "Platform/Trace/TraceControl.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "benchmarks/control_step/XmlRpcC.h"
#include "benchmarks/test_interface/load/AnswerCheck.h"
#include "benchmarks/test_interface/parts/FilledLog.h"

#include <benchmark/benchmark.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/null_sink.h>

#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace
{
constexpr int SAMPLES = 200;
constexpr const char* OBJECTS_ARRAY = "Channel.0.TxOutputPowerControlLog";

// Numbers of three and four digits and both signs, the same as in read_by_python.py. The last but one has the detected
// power of the one before it, as in a log that is full.
std::vector<Sample> makeSamples()
{
    std::vector<Sample> samples;
    samples.reserve(SAMPLES);
    for (int n = 0; n < SAMPLES; ++n) {
        samples.push_back({500 + n, 7 * n - 400, 500 - n / 10, -1000 - n, 4000 + n % 50});
    }
    return samples;
}

struct FreeText
{
    void operator()(char* pText) const { std::free(pText); }
};

/** @return a value written by its own library, in the form that the unit answers in */
std::string writeByLibrary(XmlRpcValue value)
{
    const XmlRpcRequest response(XMLRPC_RequestNew());
    XMLRPC_RequestSetRequestType(response.get(), xmlrpc_request_response);
    STRUCT_XMLRPC_REQUEST_OUTPUT_OPTIONS options{};
    options.version = xmlrpc_version_1_0;
    options.xml_elem_opts.verbosity = xml_elem_no_white_space;
    options.xml_elem_opts.escaping = xml_elem_markup_escaping;
    options.xml_elem_opts.encoding = "UTF-8";
    XMLRPC_RequestSetOutputOptions(response.get(), &options);
    XMLRPC_RequestSetData(response.get(), value.release());
    int nSize = 0;
    const std::unique_ptr<char, FreeText> pText(XMLRPC_REQUEST_ToXML(response.get(), &nSize));
    return {pText.get(), static_cast<std::size_t>(nSize)};
}

std::string take(XmlRpcCText text)
{
    if (text.pText == nullptr) {
        throw std::runtime_error("xmlrpc-c does not write the value");
    }
    std::string sText(text.pText, text.nSize);
    freeXmlRpcCText(text);
    return sText;
}

/** The transient log's "Read", and the same value without the log. */
class TransientRead
{
public:
    TransientRead() : m_samples(makeSamples()), m_log(m_samples), m_request(XMLRPC_RequestNew())
    {
        XMLRPC_VALUE parameters = XMLRPC_CreateVector(nullptr, xmlrpc_vector_array);
        XMLRPC_VALUE options = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        XMLRPC_AddValueToVector(options, XMLRPC_CreateValueString("RequestOption", "Read", 0));
        XMLRPC_AddValueToVector(parameters, options);
        XMLRPC_RequestSetData(m_request.get(), parameters);
    }

    XmlRpcValue byModule() { return m_log.serve(m_request.get()); }

    XmlRpcValue byLibrary() const
    {
        XMLRPC_VALUE response = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        XMLRPC_VALUE samples = XMLRPC_CreateVector("OPCLog", xmlrpc_vector_array);
        for (const Sample& sample : m_samples) {
            XMLRPC_VALUE value = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
            for (std::size_t n = 0; n < sample.size(); ++n) {
                XMLRPC_AddValueToVector(value, XMLRPC_CreateValueInt(SAMPLE_MEMBERS[n], sample[n]));
            }
            XMLRPC_AddValueToVector(samples, value);
        }
        XMLRPC_AddValueToVector(response, XMLRPC_CreateValueInt("RadioChannelID", 0));
        XMLRPC_AddValueToVector(response, samples);
        return XmlRpcValue(response);
    }

    std::string byXmlRpcC() const
    {
        const auto* pSamples = reinterpret_cast<const int(*)[SAMPLE_NUMBERS]>(m_samples.data());
        return take(writeSamplesByXmlRpcC(SAMPLE_MEMBERS.data(), pSamples, SAMPLES));
    }

    /** @throws std::runtime_error when one of the texts does not hold the samples */
    void requireRight()
    {
        for (const std::string& sText : {writeXmlRpcResponse(byModule().get()), writeByLibrary(byModule()),
                                         writeByLibrary(byLibrary()), byXmlRpcC()})
        {
            const std::string sWhyNot = whyNotSamples(sText, m_samples);
            if (!sWhyNot.empty()) {
                throw std::runtime_error("a wrong value of the transient log: " + sWhyNot);
            }
        }
    }

private:
    std::vector<Sample> m_samples;
    FilledLog m_log;
    XmlRpcRequest m_request;
};

/** The OPC log's "Read", and the same value without the log. */
class OpcRead
{
public:
    OpcRead() : m_log(0)
    {
        for (int n = 0; n < 6; ++n) {
            m_names.push_back("GainReductionAmplifier" + std::to_string(n + 1));
        }
        for (const std::string& sName : m_names) {
            m_namePointers.push_back(sName.c_str());
        }
        m_log.setOpcLogActive(true);
        write(m_log, 500);
        write(m_log, 490);
    }

    static void write(OutputPowerControlLog& log, int nValue)
    {
        log.writeToOpcLog(nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue, nValue);
    }

    XmlRpcValue byModule()
    {
        std::string sRead = "Read";
        return XmlRpcValue(m_log.manageOpcLog(sRead.data()));
    }

    XmlRpcValue byLibrary() const
    {
        XMLRPC_VALUE response = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
        XMLRPC_VALUE objects = XMLRPC_CreateVector(OBJECTS_ARRAY, xmlrpc_vector_array);
        for (std::size_t n = 0; n < m_names.size(); ++n) {
            XMLRPC_VALUE object = XMLRPC_CreateVector(nullptr, xmlrpc_vector_struct);
            XMLRPC_AddValueToVector(object, XMLRPC_CreateValueString("ObjectName", m_namePointers[n], 0));
            XMLRPC_AddValueToVector(object, XMLRPC_CreateValueInt("ActualValue", VALUES[n][0]));
            XMLRPC_AddValueToVector(object, XMLRPC_CreateValueInt("MinValue", VALUES[n][1]));
            XMLRPC_AddValueToVector(object, XMLRPC_CreateValueInt("MaxValue", VALUES[n][2]));
            XMLRPC_AddValueToVector(objects, object);
        }
        XMLRPC_AddValueToVector(response, objects);
        return XmlRpcValue(response);
    }

    std::string byXmlRpcC() const
    {
        return take(
            writeObjectsByXmlRpcC(OBJECTS_ARRAY, m_namePointers.data(), VALUES, static_cast<int>(m_names.size())));
    }

    /** @throws std::runtime_error when the module's value is not the one that the library is given */
    void requireRight()
    {
        if (writeByLibrary(byModule()) != writeByLibrary(byLibrary())) {
            throw std::runtime_error("the module and the library alone do not build the same value of the OPC log");
        }
    }

private:
    static constexpr int VALUES[12][OBJECT_NUMBERS] = {
        {490, 490, 500}, {490, 490, 500}, {490, 490, 500}, {490, 490, 500}, {490, 490, 500}, {0, 0, 0},
        {490, 490, 500}, {490, 490, 500}, {490, 490, 500}, {490, 490, 500}, {490, 490, 500}, {490, 490, 500}};

    std::vector<std::string> m_names = {"TxRfPowerSet", "TxRfPowerTarget", "TxRfDetectedPower",
                                        "TxIfPower",    "TxRfGain",        "TxRfGainInitial"};
    std::vector<const char*> m_namePointers;
    OutputPowerControlLog m_log;
};

void repeat(benchmark::State& state, const std::function<std::string()>& call)
{
    std::size_t nBytes = 0;
    for ([[maybe_unused]] const auto _ : state) {
        const std::string sText = call();
        nBytes = sText.size();
        benchmark::DoNotOptimize(nBytes);
    }
    state.counters["bytes"] = static_cast<double>(nBytes);
}

template <class TRead> void registerRead(const std::string& sLog, TRead& read)
{
    read.requireRight();
    const auto add = [&sLog](const char* pHow, const std::function<std::string()>& call) {
        benchmark::RegisterBenchmark((sLog + pHow).c_str(), repeat, call);
    };
    add(", module, unit's writer", [&read] { return writeXmlRpcResponse(read.byModule().get()); });
    add(", module, library's writer", [&read] { return writeByLibrary(read.byModule()); });
    add(", library alone", [&read] { return writeByLibrary(read.byLibrary()); });
    add(", xmlrpc-c", [&read] { return read.byXmlRpcC(); });
}

/** The log is emptied every 128 samples, which is in the time. */
void addSample(benchmark::State& state)
{
    constexpr int SAMPLES_PER_LOG = 128;
    OutputPowerControlLog log(0);
    log.setTransientLogActive(true);
    int nSample = 0;
    for ([[maybe_unused]] const auto _ : state) {
        if (++nSample % SAMPLES_PER_LOG == 0) {
            log.resetTransientLog();
        }
        log.addSampleToTransientLog(nSample, nSample, nSample, nSample, nSample);
    }
}

void writeOpcLog(benchmark::State& state)
{
    OutputPowerControlLog log(0);
    log.setOpcLogActive(true);
    int nSample = 0;
    for ([[maybe_unused]] const auto _ : state) {
        OpcRead::write(log, ++nSample);
    }
}

void spdlogLine(benchmark::State& state, spdlog::level::level_enum eLevel)
{
    spdlog::logger logger("benchmark", std::make_shared<spdlog::sinks::null_sink_mt>());
    logger.set_level(eLevel);
    int nStep = 0;
    for ([[maybe_unused]] const auto _ : state) {
        logger.info("{}(): txPmin= {}, txPmax = {}", "setTxPminPmax", -nStep, nStep);
        ++nStep;
    }
}

int run(int nArguments, char** ppArguments)
{
    benchmark::Initialize(&nArguments, ppArguments);
    if (benchmark::ReportUnrecognizedArguments(nArguments, ppArguments)) {
        return 2;
    }
    TraceControl::setLevelOfAll(0);
    TraceControl::setStandardErrorEnabled(false);
    TraceControl::setSystemLogEnabled(false);
    TransientRead transientRead;
    OpcRead opcRead;
    registerRead("Read of the transient log", transientRead);
    registerRead("Read of the OPC log", opcRead);
    benchmark::RegisterBenchmark("addSampleToTransientLog", addSample);
    benchmark::RegisterBenchmark("writeToOpcLog", writeOpcLog);
    benchmark::RegisterBenchmark("spdlog line, disabled", spdlogLine, spdlog::level::off);
    benchmark::RegisterBenchmark("spdlog line, discarded", spdlogLine, spdlog::level::info);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
} // namespace

int main(int nArguments, char** ppArguments)
{
    try {
        return run(nArguments, ppArguments);
    }
    catch (const std::exception& exception) {
        std::cerr << "log_commands: " << exception.what() << '\n';
        return 1;
    }
}
