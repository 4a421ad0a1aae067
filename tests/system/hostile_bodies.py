"""Grows malformed and hostile requests from real ones; the same seed gives the same requests."""

import random

POST = ("POST", "/RPC2", {"Content-Type": "text/xml"})


def call(method, *values):
    params = "".join(f"<param><value>{value}</value></param>" for value in values)
    return (f'<?xml version="1.0"?><methodCall><methodName>{method}</methodName><params>{params}</params>'
            "</methodCall>").encode()


def struct(**members):
    return "<struct>" + "".join(f"<member><name>{name}</name><value>{value}</value></member>"
                                for name, value in members.items()) + "</struct>"


REAL = (
    call("TI.ManageOPCTransientLog", struct(RequestOption="<string>Enable</string>", RadioChannelID="<int>1</int>")),
    call("TI.ManageOPCTransientLog", struct(RequestOption="Read")),
    call("TI.ManageOPCTransientLog", struct(RequestOption="SaveToSysLog")),
    call("TI.ManageLogs", struct(LogName="Channel.0.TxOutputPowerControlLog", RequestOption="Start")),
    call("TI.ManageLogs", struct(RadioChannelID="<i4>1</i4>", RequestOption="ReadAndReset")),
    call("Unit.ManageLog", "Read", "<int>0</int>"),
    call("Unit.Status"),
    call("Unit.Status", struct(RadioChannelID="<int>0</int>")),
    call("Unit.SetRequestedPower", struct(RadioChannelID="<int>0</int>", PowerDbm="<double>10.5</double>")),
    call("Unit.SetTxPower", struct(State="on")),
    call("system.methodHelp", "Unit.Status"),
    call("system.multicall", "<array><data><value>" + struct(methodName="Unit.Status", params="<array><data></data></array>")
         + "</value><value>" + struct(methodName="TI.ManageLogs", params="<array><data><value>"
                                      + struct(RequestOption="Read", RadioChannelID="<int>0</int>")
                                      + "</value></data></array>") + "</value></data></array>"),
)

WRONG_SCALARS = ("<int>abc</int>", "<int></int>", "<int>99999999999999999999</int>", "<i4>2147483648</i4>", "<i8>1</i8>",
                 "<int>1 2</int>", "<int>0x10</int>", "<double>1e999</double>", "<double>nan</double>",
                 "<double>--1</double>", "<double>" + "9" * 5000 + "</double>", "<boolean>2</boolean>",
                 "<boolean>true</boolean>", "<dateTime.iso8601>x</dateTime.iso8601>",
                 "<dateTime.iso8601>20261399T99:99:99</dateTime.iso8601>", "<base64>=</base64>", "<base64>!!!!</base64>",
                 "<base64>QQ</base64>", "<nil/>", "<unknown>1</unknown>", "<array/>", "<array><data/></array>",
                 "<struct/>", "<struct><member/></struct>", "<string><int>1</int></string>", "<int>-2147483649</int>")


def truncated(chance, body):
    return body[:chance.randrange(len(body))]


def flipped(chance, body):
    body = bytearray(body)
    for _ in range(chance.randrange(1, 9)):
        body[chance.randrange(len(body))] ^= 1 << chance.randrange(8)
    return bytes(body)


def spliced(chance, body):
    other = chance.choice(REAL)
    return body[:chance.randrange(len(body))] + other[chance.randrange(len(other)):]


def repeated(chance, body):
    begin, end = sorted((chance.randrange(len(body)), chance.randrange(len(body) + 1)))
    return body[:begin] + body[begin:end] * chance.randrange(2, 200) + body[end:]


def nested(chance, _):
    depth = chance.choice((5, 15, 20, 60, 70, 1000, 5000))
    kind = chance.randrange(3)
    if kind == 0:
        return call("Unit.Status", "<array><data><value>" * depth + "</value></data></array>" * depth)
    if kind == 1:
        return call("Unit.Status", "<struct><member><name>a</name><value>" * depth + "</value></member></struct>" * depth)
    return b"<a>" * depth


def wrong_type(chance, _):
    value = chance.choice(WRONG_SCALARS)
    member = chance.choice(("RequestOption", "RadioChannelID", "LogName", "PowerDbm", "State"))
    method = chance.choice(("TI.ManageOPCTransientLog", "TI.ManageLogs", "Unit.SetRequestedPower", "Unit.SetTxPower",
                            "Unit.Status", "system.methodHelp", "system.multicall"))
    return call(method, chance.choice((value, struct(**{member: value}))))


def declared(chance, body):
    begin, end = body[:21], body[21:]
    return chance.choice((
        begin + b'<!DOCTYPE a [<!ENTITY b "' + b"x" * 1000 + b'"><!ENTITY c "' + b"&b;" * 1000 + b'">]>' + end,
        begin + b'<!DOCTYPE a SYSTEM "file:///etc/passwd">' + end,
        begin + b'<!DOCTYPE a [<!ENTITY e SYSTEM "file:///etc/passwd">]>' + end.replace(b"Unit", b"&e;"),
        begin + b"<?php exit ?>" + end,
        end.replace(b"<value>", b'<value a="1">', 1),
        b'<?xml version="1.0" encoding="' + chance.choice((b"UTF-16", b"UTF-7", b"ISO-8859-1", b"x")) + b'"?>' + end,
        b'<?xml version="2.0"?>' + end,
        b"<!-- " + b"-" * 100 + b" -->" + end,
    ))


def badly_encoded(chance, body):
    place = chance.randrange(len(body))
    return body[:place] + chance.choice((b"\xff", b"\xc0\x80", b"\xed\xa0\x80", b"\xf5\x80\x80\x80", b"\x00", b"\xef\xbb\xbf",
                                         b"&#0;", b"&#xFFFF;", b"&nbsp;", b"]]>", b"\xe2\x82")) + body[place:]


def oversized(chance, body):
    return body + b" " * chance.choice((1000, 262144, 300000))


def numerous(chance, _):
    return call("Unit.Status", "<array><data>" + "<value/>" * chance.choice((100, 19000, 21000)) + "</data></array>")


def random_bytes(chance, _):
    return chance.randbytes(chance.randrange(2000))


GROWERS = (truncated, truncated, flipped, flipped, flipped, spliced, repeated, nested, wrong_type, wrong_type, declared,
           badly_encoded, oversized, numerous, random_bytes)

OTHER_REQUESTS = (
    ("GET", "/RPC2", {}), ("PUT", "/RPC2", {"Content-Type": "text/xml"}), ("DELETE", "/RPC2", {}), ("HEAD", "/RPC2", {}),
    ("OPTIONS", "/RPC2", {}), ("TRACE", "/RPC2", {}), ("BREW", "/RPC2", {}), ("POST", "/", {"Content-Type": "text/xml"}),
    ("POST", "/RPC2/../RPC2", {"Content-Type": "text/xml"}), ("POST", "/%52PC2", {"Content-Type": "text/xml"}),
    ("POST", "/RPC2", {}), ("POST", "/RPC2", {"Content-Type": "application/x-www-form-urlencoded"}),
    ("POST", "/RPC2", {"Content-Type": "text/plain"}), ("POST", "/RPC2", {"Content-Type": "application/json"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml; charset=utf-16"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "Host": "evil.example"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "Origin": "http://evil.example"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "Origin": "null"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "X": "y" * 20000}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "Content-Length": "-1"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "Content-Length": "99999999999999999999"}),
    ("POST", "/RPC2", {"Content-Type": "text/xml", "Transfer-Encoding": "chunked"}),
)


def hostile_requests(seed, count):
    """Yields (verb, path, headers, body)."""
    chance = random.Random(seed)
    for number in range(count):
        if number % 16 == 15:
            yield (*chance.choice(OTHER_REQUESTS), chance.choice(REAL))
        else:
            yield (*POST, chance.choice(GROWERS)(chance, chance.choice(REAL)))
