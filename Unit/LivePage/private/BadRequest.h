/** @file
 * Requests that cannot be understood.
 */
#pragma once

#include <exception>
#include <string>
#include <utility>

/** A part of a request that is not what it has to be. */
class BadRequest : public std::exception
{
public:
    explicit BadRequest(std::string sText) : m_sText(std::move(sText)) {}
    const char* what() const noexcept override { return m_sText.c_str(); }

private:
    std::string m_sText;
};
