// The answer of a hostile server, as `opc ctl` shows it: tables of as many cells as headings, and nothing in them that
// a terminal or a spreadsheet takes for more than text.
#include "Unit/Client/private/AnswerTables.h"
#include "Unit/Client/private/OutputText.h"
#include "Unit/Client/private/TransientPlot.h"
#include "Unit/XmlRpc/JsonXmlRpc.h"
#include "Unit/XmlRpc/XmlRpcFault.h"
#include "Unit/XmlRpc/XmlRpcText.h"
#include "tests/fuzz/FuzzTarget.h"

#include <algorithm>
#include <stdexcept>

namespace
{
void requireLines(const std::string& sText)
{
    require(sText.empty() || sText.back() == '\n', "a last line without an end");
    for (const std::string& sLine : splitText(sText, '\n')) {
        requireOneLine(sLine);
    }
}

void checkForm(const AnswerForm& form, const nlohmann::ordered_json& answer)
{
    try {
        const std::string sText = form.text(answer);
        requireLines(sText);
        requireLines(fitToScreen(sText, 24, 80) + "\n");
        const Table table = form.csv(answer);
        for (const auto& row : table.rows) {
            require(row.size() == table.headings.size(), "a row of another length");
            requireLines(csvLine(row));
        }
    }
    catch (const std::runtime_error& error) { // the answer lacks what it is about
        requireOneLine(error.what());
    }
}

void checkPlot(const nlohmann::ordered_json& answer)
{
    try {
        const std::string sScript = transientPlotScript(answer, true);
        requireLines(sScript);
        const std::string sEnd = "\nEND_OF_SAMPLES\n";
        const std::size_t nEnd = sScript.find(sEnd);
        require(nEnd != std::string::npos && sScript.find(sEnd, nEnd + 1) == std::string::npos,
                "samples that end twice");
        require(sScript.find('`') == std::string::npos && sScript.find("system") == std::string::npos,
                "a script that calls programs");
    }
    catch (const std::runtime_error& error) {
        requireOneLine(error.what());
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    const std::string sText = inputText(pData, nSize);
    if (checkXmlRpc(sText, EXmlRpcMessage::Response)) {
        return 0;
    }
    const XmlRpcRequest response = parseXmlRpc(sText, EXmlRpcMessage::Response);
    const nlohmann::ordered_json answer = jsonFromXmlRpc(XMLRPC_RequestGetData(response.get()));
    for (const AnswerForm* pForm :
         {&STATUS_FORM, &GAIN_FORM, &TRANSIENT_LOG_FORM, &OPC_LOG_FORM, &TRACE_LEVEL_FORM, &FAULT_FORM})
    {
        checkForm(*pForm, answer);
    }
    checkPlot(answer);
    return 0;
}
