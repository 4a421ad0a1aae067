/** @file
 * Calls a running unit over its test interface.
 */
#pragma once

#include <nlohmann/json.hpp>

#include <functional>
#include <stdexcept>
#include <string>

/** The unit took the call and would not carry it out; one line. */
class UnitRefused : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** No unit answered; one line that names the address and says what to do. */
class UnitUnreachable : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** The call was given up, since UnitClient::Settings::stopRequested said so. */
class UnitCallStopped : public std::runtime_error
{
public:
    UnitCallStopped() : std::runtime_error("the call was given up") {}
};

/** A unit at an address. One thread at a time. */
class UnitClient
{
public:
    /** How to reach a unit. */
    struct Settings
    {
        std::string sAddress = "http://127.0.0.1:8080";
        std::string sToken;                  /**< empty for none */
        double answerSeconds = 30.0;         /**< how long an answer may take */
        std::function<bool()> stopRequested; /**< asked about once a second while a call lasts; may be empty */
    };

    /** @throws ConfigurationError when the address is none */
    explicit UnitClient(Settings settings);

    /**
     * Calls a method.
     * @param members of the one struct that the method takes; an empty object is left out
     * @return the answer; ints, doubles, booleans, strings, structs and arrays as their JSON kin, with members in order
     * @throws UnitRefused for a fault or an HTTP status other than 200
     * @throws UnitUnreachable when there is no answer, or none that a unit would give
     * @throws UnitCallStopped
     */
    nlohmann::ordered_json call(const std::string& sMethod, const nlohmann::ordered_json& members) const;

private:
    Settings m_settings;
    std::string m_sUrl;
};
