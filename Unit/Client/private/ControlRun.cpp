#include "Unit/Client/private/ControlRun.h"

#include "Platform/ConfigurationError.h"
#include "Unit/Client/ControlCommand.h"
#include "Unit/Client/UnitClient.h"
#include "Unit/Client/private/AnswerFields.h"
#include "Unit/Client/private/Interrupt.h"
#include "Unit/Client/private/OutputText.h"
#include "Unit/Client/private/TransientPlot.h"
#include "Unit/Client/private/UnitAddress.h"
#include "Unit/Token/TokenFile.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <memory>

using nlohmann::ordered_json;

namespace
{
constexpr int JSON_INDENT = 2;

void checkTheyGoTogether(const ControlOptions& options, const ControlRequest& request)
{
    const bool bReads = request.pForm != nullptr;
    if (!bReads && options.watchSeconds) {
        throw ConfigurationError("--watch goes with commands that show something");
    }
    if (!bReads && !options.sCsvFile.empty()) {
        throw ConfigurationError("--csv goes with commands that show a table");
    }
    if (request.eChannelUse == EChannelUse::Never && options.nChannel) {
        throw ConfigurationError("--channel does not go with this command, which is about the whole unit");
    }
    if (options.bJson && options.sCsvFile == "-") {
        throw ConfigurationError("--json and --csv - would both write to standard output; choose one");
    }
    if (options.watchSeconds && !request.sPlotFile.empty()) {
        throw ConfigurationError("--watch does not go with --plot");
    }
}

/** @return the members of a call with the channel before the others */
ordered_json withChannel(const ControlOptions& options, const ControlRequest& request, const ordered_json& members)
{
    ordered_json all = ordered_json::object();
    if (request.eChannelUse == EChannelUse::Always || options.nChannel) {
        all["RadioChannelID"] = options.nChannel.value_or(0);
    }
    all.update(members);
    return all;
}

std::string jsonText(const ordered_json& answer, int nIndent)
{
    return answer.dump(nIndent, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

std::string timeNow()
{
    const auto now = std::chrono::system_clock::now();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)),
                       milliseconds % 1000);
}

/** Shows and records the answers of one request. */
class Answers
{
public:
    Answers(const ControlOptions& options, const ControlRequest& request)
        : m_options(options), m_request(request),
          m_shown(options.watchSeconds && !options.bJson && isatty(STDOUT_FILENO) == 1)
    {
        if (!options.sCsvFile.empty()) {
            m_pCsv = std::make_unique<CsvOutput>(options.sCsvFile);
        }
    }

    void take(const ordered_json& answer)
    {
        record(answer);
        if (!m_request.sPlotFile.empty()) {
            plotTransientLog(answer, m_request.sPlotFile);
        }
        if (m_options.bJson) {
            writeText(stdout, "standard output", jsonText(answer, m_options.watchSeconds ? -1 : JSON_INDENT));
        }
        else if (m_request.pForm == nullptr) {
            writeText(stdout, "standard output", AnswerFields(answer, "OK").plain("StandardResponse") + "\n");
        }
        else if (m_options.sCsvFile != "-" && m_request.sPlotFile.empty()) {
            m_shown.show(m_request.pForm->text(answer));
        }
    }

private:
    void record(const ordered_json& answer)
    {
        if (!m_pCsv) {
            return;
        }
        const bool bTime = m_options.watchSeconds.has_value();
        const std::string sTime = timeNow();
        Table table = m_request.pForm->csv(answer);
        std::string sLines;
        if (!m_bHeadingWritten) {
            table.headings.insert(table.headings.begin(), bTime ? 1 : 0, "time_utc");
            sLines += csvLine(table.headings);
            m_bHeadingWritten = true;
        }
        for (std::vector<std::string>& row : table.rows) {
            row.insert(row.begin(), bTime ? 1 : 0, sTime);
            sLines += csvLine(row);
        }
        m_pCsv->write(sLines);
    }

    const ControlOptions& m_options;
    const ControlRequest& m_request;
    ShownText m_shown;
    std::unique_ptr<CsvOutput> m_pCsv;
    bool m_bHeadingWritten = false;
};

UnitClient::Settings clientSettings(const ControlOptions& options)
{
    UnitClient::Settings settings;
    settings.sAddress = options.sAddress;
    settings.sToken = options.sTokenFile.empty() ? "" : readTokenFile(options.sTokenFile);
    settings.answerSeconds = options.answerSeconds;
    return settings;
}

/** Calls in even steps, leaving out those that an answer took too long for. */
void watch(UnitClient::Settings settings, const ControlRequest& request, const ordered_json& members, Answers& answers,
           double seconds)
{
    Interrupt interrupt;
    settings.stopRequested = [&interrupt] { return interrupt.waitFor(0.0); };
    const UnitClient client(std::move(settings));
    const std::chrono::duration<double> period(seconds);
    auto next = std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch());
    std::chrono::duration<double> wait{};
    do {
        answers.take(client.call(request.sMethod, members));
        const auto now = std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch());
        do {
            next += period;
        } while (next <= now);
        wait = next - now;
    } while (!interrupt.waitFor(wait.count()));
}

void callAndShow(const ControlOptions& options, const ControlRequest& request)
{
    UnitClient::Settings settings = clientSettings(options);
    const ordered_json members = withChannel(options, request, request.members);
    Answers answers(options, request);
    if (options.watchSeconds) {
        watch(std::move(settings), request, members, answers, *options.watchSeconds);
        return;
    }
    const UnitClient client(std::move(settings));
    ordered_json answer = client.call(request.sMethod, members);
    for (const ordered_json& further : request.furtherCalls) {
        answer = client.call(request.sMethod, withChannel(options, request, further));
    }
    answers.take(answer);
}
} // namespace

int runControl(const ControlOptions& options, const ControlRequest& request)
{
    checkTheyGoTogether(options, request);
    (void)std::signal(SIGPIPE, SIG_IGN); // a reader of the output that goes away is no failure
    try {
        callAndShow(options, request);
        return eCONTROL_DONE;
    }
    catch (const ConfigurationError&) {
        throw;
    }
    catch (const UnitUnreachable& error) {
        fmt::print(stderr, "opc ctl: {}\n", error.what());
        return eCONTROL_UNREACHABLE;
    }
    catch (const UnitCallStopped&) {
        return eCONTROL_DONE;
    }
    catch (const OutputClosed&) {
        return eCONTROL_DONE;
    }
    catch (const std::exception& error) {
        fmt::print(stderr, "opc ctl: {}\n", error.what());
        return eCONTROL_REFUSED;
    }
}
