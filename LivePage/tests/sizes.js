/** What the page weighs: each asset, raw and gzipped. */
import { readFileSync } from "node:fs";
import { gzipSync } from "node:zlib";
import { assetFiles } from "./fakeUnit.js";

let raw = 0;
let zipped = 0;
const rows = [...assetFiles()].map(([address, file]) => {
    const bytes = readFileSync(new URL(`../${file}`, import.meta.url));
    const small = gzipSync(bytes, { level: 9 }).length;
    raw += bytes.length;
    zipped += small;
    return `${String(bytes.length).padStart(8)} ${String(small).padStart(8)}  ${address}`;
});
console.log(
    ["     raw  gzipped", ...rows, `${String(raw).padStart(8)} ${String(zipped).padStart(8)}  together`].join("\n"),
);
