import assert from "node:assert/strict";
import { test } from "node:test";
import { decodeCall, decodeResponse, encodeCall, encodeValue, XmlRpcFault } from "../src/xmlRpc.js";

for (const [value, xml] of /** @type {[import("../src/xmlRpc.js").XmlRpcValue, string][]} */ ([
    [5, "<value><int>5</int></value>"],
    [-12.5, "<value><double>-12.5</double></value>"],
    [4294967296, "<value><double>4294967296</double></value>"],
    [1e-7, "<value><double>0.00000010000000000000</double></value>"],
    [true, "<value><boolean>1</boolean></value>"],
    ["a<b&c>", "<value><string>a&lt;b&amp;c&gt;</string></value>"],
    [
        [1, "x"],
        "<value><array><data><value><int>1</int></value><value><string>x</string></value></data></array></value>",
    ],
    [
        { State: "on" },
        "<value><struct><member><name>State</name><value><string>on</string></value></member></struct></value>",
    ],
])) {
    test(`${JSON.stringify(value)} is encoded and read back`, () => {
        assert.equal(encodeValue(value), xml);
        assert.deepEqual(
            decodeResponse(`<methodResponse><params><param>${xml}</param></params></methodResponse>`),
            value,
        );
    });
}

test("a call is read back as it was", () => {
    const parameters = [{ RadioChannelID: 1, PowerDbm: 12.5, Deep: [{ a: [] }] }, "é&"];
    assert.deepEqual(decodeCall(encodeCall("Unit.SetRequestedPower", parameters)), {
        method: "Unit.SetRequestedPower",
        parameters,
    });
});

test("an answer of a unit is read with white space and comments in it", () => {
    const answer = decodeResponse(`<?xml version="1.0" encoding="UTF-8"?>
<methodResponse><params><param><value><struct>
  <member><name>On</name><value><array><data> <value><int>20</int></value><!-- one more -->
  <value><i4>-25</i4></value></data></array></value></member>
  <member><name>Plain</name><value>text &#65;&#x42;</value></member>
  <member><name>Empty</name><value><string/></value></member>
</struct></value></param></params></methodResponse>`);
    assert.deepEqual(answer, { On: [20, -25], Plain: "text AB", Empty: "" });
});

test("a fault is thrown with code and text", () => {
    const xml =
        "<methodResponse><fault><value><struct><member><name>faultCode</name><value><int>4</int></value></member>" +
        "<member><name>faultString</name><value><string>eTI_E_FAILED</string></value></member></struct></value></fault></methodResponse>";
    assert.throws(
        () => decodeResponse(xml),
        (/** @type {unknown} */ error) =>
            error instanceof XmlRpcFault && error.code === 4 && error.message === "eTI_E_FAILED",
    );
});

for (const bad of [
    "",
    "x",
    "<methodResponse>",
    "<a></b>",
    "<methodCall/>",
    "<methodResponse><params/></methodResponse>",
    "<a",
    "</a>",
    "<methodResponse><params><param><value><int>x</int></value></param></params></methodResponse>",
    "<methodResponse><params><param><value><nil/></value></param></params></methodResponse>",
    "<methodResponse><params><param><value>&what;</value></param></params></methodResponse>",
]) {
    test(`${JSON.stringify(bad)} is no answer`, () => assert.throws(() => decodeResponse(bad)));
}

test("numbers that XML-RPC does not know are not sent", () => {
    assert.throws(() => encodeValue(NaN), RangeError);
    assert.throws(() => encodeValue(Infinity), RangeError);
});
