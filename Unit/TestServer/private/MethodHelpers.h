/** @file
 * What the unit's methods have in common.
 */
#pragma once

#include "Unit/Process/RegulationLoop.h"
#include "Unit/TestServer/MethodTable.h"
#include "Unit/XmlRpc/XmlRpcFault.h"

#include <functional>
#include <string>

/** @return the fault of a call that could not be carried out: "eTI_E_FAILED, <method> <text>" */
XmlRpcFault failure(const MethodCall& call, const std::string& sText);

/** The member that names the channel in requests and answers. */
inline constexpr const char* CHANNEL = "RadioChannelID";

/** @return the channel that the member "RadioChannelID" names, 0 without it. @throws XmlRpcFault for an unknown one */
RadioChannel& channelOf(const MethodCall& call, const RegulationLoop& loop);

/** @return a member's value. @throws XmlRpcFault when it is missing, of another type or out of range */
double numberInRange(const MethodCall& call, const char* pMember, double minimum, double maximum);
int integerInRange(const MethodCall& call, const char* pMember, int minimum, int maximum);

/** Runs a function between two steps. @throws XmlRpcFault when the unit is stopping */
void betweenSteps(const MethodCall& call, RegulationLoop& loop, const std::function<void()>& function);

/**
 * Has a channel's controller do something between two steps.
 * @throws XmlRpcFault when the controller returns a failure or the unit is stopping
 */
void tellChannel(const MethodCall& call, RegulationLoop& loop, const std::function<long(RadioChannel&)>& function);

/** @return {"StandardResponse": "OK"} */
XmlRpcValue standardResponse();

/** Adds a method that takes one struct and returns one. */
void addStructMethod(MethodTable& table, const char* pName, const char* pHelp,
                     std::function<XmlRpcValue(const MethodCall&)> call,
                     EMethodChange eChanges = EMethodChange::Nothing);
