/** @file
 * Methods to serve in tests.
 */
#pragma once

#include "Unit/TestServer/MethodTable.h"

#include <string>

/**
 * Test.Echo (gives back Value, a string, or "none"), Test.Add {A int, B int}, Test.Samples {Count int, of a log},
 * Test.Handler (reads the request by the library as a module's handler does), Test.Parameters (their number),
 * Test.Refuse (code 4), Test.Throw, Test.ThrowOther, Test.Nothing (a null value), Test.Named (a value with a name).
 */
MethodTable testMethods();

/** @return a call of that method with that struct */
std::string callWithStruct(const std::string& sMethod, XmlRpcValue members);

/** @return the response, parsed; a fault is a failure of the test */
XmlRpcRequest readAnswer(const std::string& sText);

/** Expects the response to be this fault. */
void expectFault(const std::string& sText, int nCode, const std::string& sFaultText);
