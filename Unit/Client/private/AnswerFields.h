/** @file
 * Reads what a unit answered, whatever a foreign one left out or sent in another form.
 */
#pragma once

#include <nlohmann/json.hpp>

#include <string>

/** Members of one struct as text. */
class AnswerFields
{
public:
    /**
     * @param object outlives this; anything but an object has no members
     * @param sMissing what stands for a member that is not there; empty also makes power() leave its markers empty
     */
    AnswerFields(const nlohmann::ordered_json& object, std::string sMissing);

    bool has(const char* pMember) const;

    /** @return the value as it is: a string without quotes, a number with the digits that it needs */
    std::string plain(const char* pMember) const;

    /** @return a number with this many decimals; other values as they are */
    std::string number(const char* pMember, int nDecimals) const;

    /** @return hundredths of a decibel in decibels with two decimals; "off" and "unknown" for the markers of a power */
    std::string power(const char* pMember) const;

    /** @return hundredths of a decibel in decibels with two decimals */
    std::string gain(const char* pMember) const;

private:
    const nlohmann::ordered_json* find(const char* pMember) const;

    const nlohmann::ordered_json& m_object;
    std::string m_sMissing;
};

/** @return a value as text, such as 12.5, on or TX_ON; on one line */
std::string plainText(const nlohmann::ordered_json& value);

/**
 * @return the array that a struct has under a name
 * @throws std::runtime_error when there is none
 */
const nlohmann::ordered_json& arrayOf(const nlohmann::ordered_json& answer, const std::string& sMember);
