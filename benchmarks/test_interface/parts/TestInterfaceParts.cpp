/** @file
 * What the parts of one Read of the transient log cost, without HTTP and without the regulation thread.
 *
 * usage: test_interface_parts SAMPLES [option of Google Benchmark...]
 */
#include "Platform/Trace/TraceControl.h"
#include "Unit/TestServer/XmlRpcService.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "benchmarks/test_interface/load/AnswerCheck.h"
#include "benchmarks/test_interface/parts/FilledLog.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>
#include <exception>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace
{
constexpr const char* METHOD = "TI.ManageOPCTransientLog";
const std::string CALL = "<?xml version=\"1.0\"?><methodCall><methodName>TI.ManageOPCTransientLog</methodName><params>"
                         "<param><value><struct><member><name>RequestOption</name><value><string>Read</string></value>"
                         "</member></struct></value></param></params></methodCall>";

struct FreeText
{
    void operator()(char* pText) const { std::free(pText); }
};
using LibraryText = std::unique_ptr<char, FreeText>;

class Parts
{
public:
    explicit Parts(const std::vector<Sample>& samples)
        : m_log(samples), m_request(parseXmlRpc(CALL, EXmlRpcMessage::Call)), m_service(methods())
    {
        requireRight(m_service.answer(CALL), samples);
        requireRight(libraryText(asResponse(build()).get()).get(), samples);
    }

    XmlRpcValue build() { return m_log.serve(m_request.get()); }
    const XmlRpcService& service() const { return m_service; }

    /** @return the value as the library wants it for writing */
    static XmlRpcRequest asResponse(XmlRpcValue value)
    {
        XmlRpcRequest response(XMLRPC_RequestNew());
        XMLRPC_RequestSetRequestType(response.get(), xmlrpc_request_response);
        STRUCT_XMLRPC_REQUEST_OUTPUT_OPTIONS options{};
        options.version = xmlrpc_version_1_0;
        options.xml_elem_opts.verbosity = xml_elem_no_white_space;
        options.xml_elem_opts.escaping = xml_elem_markup_escaping;
        options.xml_elem_opts.encoding = "UTF-8";
        XMLRPC_RequestSetOutputOptions(response.get(), &options);
        XMLRPC_RequestSetData(response.get(), value.release());
        return response;
    }

    static LibraryText libraryText(XMLRPC_REQUEST response)
    {
        return LibraryText(XMLRPC_REQUEST_ToXML(response, nullptr));
    }

private:
    MethodTable methods()
    {
        MethodTable table;
        table.add({METHOD, "", {}, [this](const MethodCall& call) { return m_log.serve(call.request()); }});
        return table;
    }

    static void requireRight(const std::string& sBody, const std::vector<Sample>& samples)
    {
        const std::string sWhyNot = whyNotSamples(sBody, samples);
        if (!sWhyNot.empty()) {
            throw std::runtime_error("a wrong answer: " + sWhyNot);
        }
    }

    FilledLog m_log;
    XmlRpcRequest m_request;
    XmlRpcService m_service;
};

Parts* s_pParts = nullptr; // what all benchmarks share; run() has it

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    constexpr double SECONDS_PER_NANOSECOND = 1e-9;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * SECONDS_PER_NANOSECOND;
}

/** Counts the processor time of a part of the iteration only. */
template <class TFunction> void timed(benchmark::State& state, TFunction function)
{
    const double begin = threadSeconds();
    function();
    state.SetIterationTime(threadSeconds() - begin);
}

void guard(benchmark::State& state)
{
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(checkXmlRpc(CALL, EXmlRpcMessage::Call));
    }
}

void guardAndParse(benchmark::State& state)
{
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(parseXmlRpc(CALL, EXmlRpcMessage::Call));
    }
}

// The parts that follow come in the order of a call, of which each times its own: a value that was just built is
// written more slowly than one that has been written before.

void buildValue(benchmark::State& state)
{
    while (state.KeepRunning()) {
        XmlRpcValue value;
        timed(state, [&] { value = s_pParts->build(); });
        benchmark::DoNotOptimize(writeXmlRpcResponse(value.get()));
    }
}

void write(benchmark::State& state)
{
    std::string sBody;
    while (state.KeepRunning()) {
        const XmlRpcValue value = s_pParts->build();
        timed(state, [&] { sBody = writeXmlRpcResponse(value.get()); });
    }
    state.counters["bytes"] = static_cast<double>(sBody.size());
}

void freeValue(benchmark::State& state)
{
    while (state.KeepRunning()) {
        XmlRpcValue value = s_pParts->build();
        benchmark::DoNotOptimize(writeXmlRpcResponse(value.get()));
        timed(state, [&] { value.reset(); });
    }
}

void writeByLibrary(benchmark::State& state)
{
    while (state.KeepRunning()) {
        const XmlRpcRequest response = Parts::asResponse(s_pParts->build());
        timed(state, [&] { benchmark::DoNotOptimize(Parts::libraryText(response.get())); });
    }
}

void wholeCall(benchmark::State& state)
{
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(s_pParts->service().answer(CALL));
    }
}

BENCHMARK(guard);
BENCHMARK(guardAndParse);
BENCHMARK(buildValue)->UseManualTime();
BENCHMARK(write)->UseManualTime();
BENCHMARK(freeValue)->UseManualTime();
BENCHMARK(writeByLibrary)->UseManualTime();
BENCHMARK(wholeCall);

int run(int nArguments, char** ppArguments)
{
    benchmark::Initialize(&nArguments, ppArguments);
    if (nArguments != 2) {
        throw std::runtime_error("usage: test_interface_parts SAMPLES [option of Google Benchmark...]");
    }
    constexpr int LEVEL_OF_THE_EXAMPLE_UNIT = 1;
    TraceControl::setLevelOfAll(LEVEL_OF_THE_EXAMPLE_UNIT);
    Parts parts(readSamples(ppArguments[1]));
    // cppcheck-suppress danglingLifetime ; the benchmarks that read it are run below
    s_pParts = &parts;
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
        std::cerr << "test_interface_parts: " << exception.what() << '\n';
        return 1;
    }
}
