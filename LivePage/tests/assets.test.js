import assert from "node:assert/strict";
import { existsSync, readFileSync, readdirSync } from "node:fs";
import { test } from "node:test";
import { assetFiles } from "./fakeUnit.js";

const ROOT = new URL("../", import.meta.url);
const files = assetFiles();

test("every module is served, and every file that is served is there", () => {
    const modules = readdirSync(new URL("src/", ROOT)).map((name) => `src/${name}`);
    assert.deepEqual(
        [...files.values()].filter((file) => file.startsWith("src/")),
        modules.sort(),
    );
    for (const file of files.values()) {
        assert.ok(existsSync(new URL(file, ROOT)), file);
    }
});

test("whatever the page names is served by the unit itself", () => {
    const page = readFileSync(new URL("index.html", ROOT), "utf8");
    for (const [, address] of page.matchAll(/(?:src|href)="([^"#][^"]*)"/g)) {
        assert.ok(files.has(`/${address}`), address);
    }
    assert.doesNotMatch(page, /style=|<style|onclick=|<script>/);
    for (const [address, file] of files) {
        if (file.startsWith("src/")) {
            const text = readFileSync(new URL(file, ROOT), "utf8");
            for (const [, name] of text.matchAll(/^import .*"\.\/([^"]+)";$/gm)) {
                assert.ok(files.has(`/assets/${name}`), `${address} imports ${name}`);
            }
            assert.doesNotMatch(text, /\beval\(|innerHTML|setAttribute\("style"/, file);
        }
    }
});
