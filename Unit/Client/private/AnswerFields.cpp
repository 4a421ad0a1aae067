#include "Unit/Client/private/AnswerFields.h"

#include "Unit/Text/OneLine.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

using nlohmann::ordered_json;

namespace
{
constexpr int OFF_CENTI_DBM = -9900;
constexpr int UNKNOWN_CENTI_DBM = -10000;
constexpr double CENTI = 100.0;

std::string fixed(double value, int nDecimals)
{
    std::string sText = fmt::format("{:.{}f}", value, nDecimals);
    if (sText.front() == '-' && sText.find_first_not_of("-0.") == std::string::npos) {
        sText.erase(0, 1); // a zero has no sign for people
    }
    return sText;
}
} // namespace

std::string plainText(const ordered_json& value)
{
    if (value.is_string()) {
        return oneLine(value.get<std::string>());
    }
    if (value.is_number_float()) {
        return fmt::format("{}", value.get<double>());
    }
    return oneLine(value.dump());
}

AnswerFields::AnswerFields(const ordered_json& object, std::string sMissing)
    : m_object(object), m_sMissing(std::move(sMissing))
{}

const ordered_json* AnswerFields::find(const char* pMember) const
{
    if (!m_object.is_object()) {
        return nullptr;
    }
    const auto found = m_object.find(pMember);
    return found == m_object.end() ? nullptr : &*found;
}

bool AnswerFields::has(const char* pMember) const
{
    return find(pMember) != nullptr;
}

std::string AnswerFields::plain(const char* pMember) const
{
    const ordered_json* pValue = find(pMember);
    return pValue == nullptr ? m_sMissing : plainText(*pValue);
}

std::string AnswerFields::number(const char* pMember, int nDecimals) const
{
    const ordered_json* pValue = find(pMember);
    return pValue != nullptr && pValue->is_number() ? fixed(pValue->get<double>(), nDecimals) : plain(pMember);
}

std::string AnswerFields::power(const char* pMember) const
{
    const ordered_json* pValue = find(pMember);
    const int nValue = pValue != nullptr && pValue->is_number_integer() ? pValue->get<int>() : 0;
    if (nValue == OFF_CENTI_DBM || nValue == UNKNOWN_CENTI_DBM) {
        const char* pWord = nValue == OFF_CENTI_DBM ? "off" : "unknown";
        return m_sMissing.empty() ? "" : pWord;
    }
    return gain(pMember);
}

std::string AnswerFields::gain(const char* pMember) const
{
    const ordered_json* pValue = find(pMember);
    return pValue != nullptr && pValue->is_number() ? fixed(pValue->get<double>() / CENTI, 2) : plain(pMember);
}

const ordered_json& arrayOf(const ordered_json& answer, const std::string& sMember)
{
    if (!answer.is_object() || !answer.contains(sMember) || !answer.at(sMember).is_array()) {
        throw std::runtime_error(fmt::format("the unit's answer has no array \"{}\"; --json shows what came", sMember));
    }
    return answer.at(sMember);
}
