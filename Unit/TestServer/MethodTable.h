/** @file
 * The methods that the test interface serves.
 */
#pragma once

#include "Unit/XmlRpc/XmlRpcValue.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/**
 * The parameters of one call: by our convention a single struct, whose members are read by name.
 *
 * Every reader throws XmlRpcFault that names the method and the member when that is missing or of another type.
 */
class MethodCall
{
public:
    /** @param request must outlive the call; a request without a struct is a call without members */
    MethodCall(std::string sMethod, XMLRPC_REQUEST request);

    const std::string& method() const { return m_sMethod; }

    /** @return the request, for handlers that read it themselves */
    XMLRPC_REQUEST request() const { return m_request; }

    /** @return the struct of the members; null when the call has none */
    XMLRPC_VALUE members() const { return m_members; }

    bool has(const char* pMember) const;
    std::optional<int> integer(const char* pMember) const;
    std::optional<double> number(const char* pMember) const; /**< takes an int, too */
    std::optional<bool> boolean(const char* pMember) const;  /**< takes the ints 0 and 1, too */
    std::optional<std::string> text(const char* pMember) const;

    int requiredInteger(const char* pMember) const;
    double requiredNumber(const char* pMember) const;
    bool requiredBoolean(const char* pMember) const;
    std::string requiredText(const char* pMember) const;

    /** Refuses members other than these. */
    void allowOnly(const std::vector<std::string>& members) const;

private:
    std::string m_sMethod;
    XMLRPC_REQUEST m_request;
    XMLRPC_VALUE m_members; // the request's; null for none
};

/** What a method changes. */
enum class EMethodChange
{
    Nothing,
    Unit,   /**< something of the whole unit */
    Channel /**< something of a radio channel, unless its option is to read */
};

/** A method. */
struct Method
{
    std::string sName;                                  /**< such as "Unit.Status" */
    std::string sHelp;                                  /**< what system.methodHelp tells */
    std::vector<std::vector<std::string>> signatures;   /**< type of the result, then of each parameter */
    std::function<XmlRpcValue(const MethodCall&)> call; /**< any thread; throws XmlRpcFault for a fault */
    EMethodChange eChanges = EMethodChange::Nothing;
};

/** Methods by name. Filled before it is shared between threads. */
class MethodTable
{
public:
    /** Adds a method, or replaces the one of its name. */
    void add(Method method);

    /** @return null for an unknown name */
    const Method* find(const std::string& sName) const;

    /** @return all names, sorted */
    std::vector<std::string> names() const;

private:
    std::map<std::string, Method> m_methods;
};
