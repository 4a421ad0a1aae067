import assert from "node:assert/strict";
import { test } from "node:test";
import { EventStreamParser } from "../src/eventStream.js";
import { Backoff } from "../src/backoff.js";

/** @param {string[]} pieces */
function parse(pieces) {
    /** @type {import("../src/eventStream.js").StreamMessage[]} */
    const messages = [];
    const parser = new EventStreamParser((message) => messages.push(message));
    pieces.forEach((piece) => parser.push(piece));
    return messages;
}

const STEPS = 'id: 12\nevent: steps\ndata: {"a":1}\n\n';

test("a message is told with its id, event and data", () => {
    assert.deepEqual(parse([STEPS]), [{ id: "12", event: "steps", data: '{"a":1}' }]);
});

test("a message is the same wherever the pieces end", () => {
    for (const text of [STEPS, STEPS.replaceAll("\n", "\r\n"), STEPS.replaceAll("\n", "\r")]) {
        const whole = `${text}: alive\n\n${text}`;
        for (let cut = 0; cut <= whole.length; ++cut) {
            assert.equal(
                parse([whole.slice(0, cut), whole.slice(cut)]).length,
                2,
                `cut at ${cut} of ${JSON.stringify(text)}`,
            );
        }
        assert.equal(parse([...whole]).length, 2);
    }
});

for (const [name, text, expected] of /** @type {[string, string, any[]][]} */ ([
    ["comments are no messages", ": alive\n\n", []],
    ["lines of data are joined", "data: a\ndata: b\n\n", [{ id: "", event: "message", data: "a\nb" }]],
    ["one blank after the colon is taken away", "data:  a\n\n", [{ id: "", event: "message", data: " a" }]],
    [
        "an id lasts",
        "id: 5\ndata: a\n\ndata: b\n\n",
        [
            { id: "5", event: "message", data: "a" },
            { id: "5", event: "message", data: "b" },
        ],
    ],
    [
        "an event does not last",
        "event: x\ndata: a\n\ndata: b\n\n",
        [
            { id: "", event: "x", data: "a" },
            { id: "", event: "message", data: "b" },
        ],
    ],
    ["a message without an end is none", "data: a\n", []],
    ["unknown fields are left alone", "retry: 5\nfoo\ndata: a\n\n", [{ id: "", event: "message", data: "a" }]],
    ["a byte order mark is left alone", "\uFEFFdata: a\n\n", [{ id: "", event: "message", data: "a" }]],
])) {
    test(name, () => assert.deepEqual(parse([text]), expected));
}

test("waits double up to the most and begin anew", () => {
    const backoff = new Backoff(250, 4000, () => 1);
    assert.deepEqual(
        [1, 2, 3, 4, 5, 6].map(() => backoff.next()),
        [250, 500, 1000, 2000, 4000, 4000],
    );
    backoff.reset();
    assert.equal(backoff.next(), 250);
    assert.equal(new Backoff(250, 4000, () => 0).next(), 125);
});
