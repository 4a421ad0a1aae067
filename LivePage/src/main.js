import { UnitActions } from "./actions.js";
import { Api } from "./api.js";
import { ChartStack } from "./chartStack.js";
import { Controls } from "./controls.js";
import { CursorPanel } from "./cursors.js";
import { helpDialog, historyDialog, tokenDialog } from "./dialogs.js";
import { byId, download, forgetColours, h, setText, toast } from "./dom.js";
import { EventsList } from "./eventsList.js";
import { csvOfPicture, csvOfRing, isoTime } from "./exportCsv.js";
import { pictureOfCharts } from "./exportPng.js";
import { Filler } from "./filler.js";
import { HistorySource } from "./historySource.js";
import { listenToKeys } from "./keyboard.js";
import { Readouts } from "./readouts.js";
import { ReplayBar } from "./replayBar.js";
import { Statistics } from "./statistics.js";
import { StatusLine } from "./statusLine.js";
import { Store } from "./store.js";
import { STREAM_ENDED, StreamClient } from "./stream.js";
import { listenToTabs } from "./tabs.js";
import { Tiles } from "./tiles.js";
import { Toolbar } from "./toolbar.js";
import { TransientPanel } from "./transient.js";
import { storeValuesAt } from "./valuesAt.js";
import { encodeView } from "./viewLink.js";

const TEXT_EACH_MS = 100;
const UNIT_EACH_MS = 5000;
const REPLAY_EACH_MS = 500;

const store = new Store();
const api = new Api(tokenDialog);
const actions = new UnitActions(api);
const history = new HistorySource(api, store);
const stack = new ChartStack(store, byId("stack"), history);
const tiles = new Tiles(store, byId("tiles"));
const readouts = new Readouts(store, byId("readouts"));
const cursors = new CursorPanel(store, byId("cursor-line"));
const events = new EventsList(store);
const monitor = byId("panel-monitor");
const logs = [new Statistics(store, actions).element, new TransientPanel(store, actions).element];
const noUnit = h(
    "p",
    { class: "quiet", hidden: true },
    "A recording is played: there is no unit to control, and its logs are not recorded.",
);
monitor.append(cursors.element, noUnit, ...logs, events.element);
const controls = new Controls(store, actions, byId("panel-control"));
const replay = new ReplayBar(store, actions, readUnit);
byId("toolbar").after(replay.element);

async function readUnit() {
    const { unit: before } = store;
    store.takeUnit(await api.unit());
    const { unit } = store;
    if (before === null || unit === null) {
        return;
    }
    if (before.run !== unit.run) {
        filler.forget();
        stream.restart();
    } else if (
        unit.replay !== null &&
        (before.replay?.paused !== unit.replay.paused || before.replay?.speed !== unit.replay.speed)
    ) {
        filler.forget(); // a replay that is very fast leaves steps out
        void filler.fill();
    }
}

store.on("unit", () => {
    const isReplay = store.unit?.replay != null;
    logs.forEach((log) => (log.hidden = isReplay));
    noUnit.hidden = !isReplay;
    byId("tab-control").hidden = isReplay;
});

const filler = new Filler(api, store, (problem) => toast(`No history: ${problem}`, "alarm"));

const stream = new StreamClient(api, {
    onRun: (run) => {
        if (store.unit?.run !== run) {
            void readUnit().catch(() => {});
        }
    },
    onSteps: (steps) => {
        if (steps.run === undefined || steps.run === store.unit?.run) {
            store.takeSteps(steps);
            if (steps.gap > 0) {
                filler.forget();
            }
            void filler.fill();
        }
    },
    onEvents: (fresh) => store.takeEvents(fresh),
    onState: (state, reason) => {
        store.connection = state;
        store.connectionReason = reason;
        const notice = byId("notice");
        // The stream of a replay ends at each jump, and comes again at once.
        notice.hidden = state !== "waiting" || (store.unit?.replay != null && reason === STREAM_ENDED);
        setText(notice, state === "waiting" ? `The unit does not answer (${reason}); trying again.` : "");
    },
});
const status = new StatusLine(store, stack, stream, history);

/** @param {string} extension */
function fileName(extension) {
    const time = isoTime(store.startedMs, store.shown.fromUs).replace(/[:.]/g, "-").slice(0, 23);
    return `channel-${store.view.channel}-${time}.${extension}`;
}

const view = {
    history: async () => {
        const range = await historyDialog(store);
        if (range !== null) {
            store.show(range.fromUs, range.toUs);
        }
    },
    csv: () => {
        const { picture, shown } = store;
        if (picture === null) {
            return;
        }
        const { channel, hidden } = store.view;
        const text =
            picture.ring !== null
                ? csvOfRing(picture.ring, channel, shown.fromUs, shown.toUs, store.startedMs, hidden)
                : csvOfPicture(picture, channel, shown.fromUs, shown.toUs, store.startedMs, hidden);
        download(fileName("csv"), new Blob([text], { type: "text/csv" }));
    },
    png: () => void pictureOfCharts(store, stack).then((blob) => download(fileName("png"), blob)),
    link: async () => {
        if (!store.held) {
            store.toggleHold();
        }
        writeAddress();
        try {
            await navigator.clipboard.writeText(location.href);
            toast("The link to this view is copied", "well");
        } catch {
            toast("The address of this page is the link to this view");
        }
    },
    theme: () => {
        const isDark =
            (store.view.theme ||
                document.documentElement.dataset["theme"] ||
                (matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light")) === "dark";
        const theme = isDark ? "light" : "dark";
        document.documentElement.dataset["theme"] = theme;
        try {
            localStorage.setItem("theme", theme);
        } catch {
            // Then the choice lasts as long as the page.
        }
        store.change({ theme });
        repaint();
    },
    help: () => void helpDialog(),
};

function repaint() {
    forgetColours();
    stack.rebuild();
    store.tell("theme");
}

function writeAddress() {
    const hash = encodeView(store.view);
    globalThis.history.replaceState(null, "", hash === "" ? location.pathname : `#${hash}`);
}

const toolbar = new Toolbar(store, byId("toolbar"), byId("page-tools"), view);
stack.plots.find((plot) => plot.spec.name === "error")?.head.append(toolbar.errorRange);
const otherTab = listenToTabs(() => void controls.read());
listenToKeys(store, { ...view, replay, control: () => store.unit?.replay == null && otherTab() });
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", repaint);

// The address holds the view, so this link must not go there.
document.querySelector(".skip")?.addEventListener("click", (event) => {
    event.preventDefault();
    byId("charts").focus();
});

let drawnView = store.view;
let addressTimer = 0;
store.on("view", () => {
    const { view: now } = store;
    if (store.paused) {
        void filler.fill(); // no steps will come that would have it done
    }
    if (now.channel !== drawnView.channel || now.unit !== drawnView.unit || now.hidden !== drawnView.hidden) {
        now.hidden !== drawnView.hidden || now.unit !== drawnView.unit ? stack.rebuild() : stack.refit();
        events.update();
    }
    drawnView = now;
    clearTimeout(addressTimer);
    addressTimer = window.setTimeout(writeAddress, 300);
});
window.addEventListener("hashchange", () => location.reload());

let textAtMs = 0;
/** @param {number} nowMs */
function frame(nowMs) {
    const drew = stack.frame();
    if (nowMs - textAtMs >= TEXT_EACH_MS) {
        textAtMs = nowMs;
        tiles.update();
        readouts.update();
        cursors.update();
        status.update();
        toolbar.updatePhase();
        const values = storeValuesAt(
            store,
            store.pointerUs ?? Math.min(store.shown.toUs, store.ring?.newestUs ?? store.shown.toUs),
        );
        stack.plots.forEach((plot) => plot.showValues(values));
    }
    if (drew && globalThis.performance.getEntriesByName("first-charts").length === 0 && store.newestUs > 0) {
        performance.mark("first-charts");
    }
    requestAnimationFrame(frame);
}

async function start() {
    for (let waitMs = 500; ; waitMs = Math.min(8000, waitMs * 2)) {
        try {
            const asked = store.view;
            await readUnit();
            if (asked.fixed !== null && asked.run !== "" && asked.run !== store.unit?.run) {
                store.change({ fixed: null, a: null, b: null });
                toast("The link is of an earlier run of this unit; this is the present one");
            }
            break;
        } catch (error) {
            byId("notice").hidden = false;
            setText(
                byId("notice"),
                `The unit does not answer: ${error instanceof Error ? error.message : String(error)}`,
            );
            await new Promise((resolve) => setTimeout(resolve, waitMs));
        }
    }
    byId("notice").hidden = true;
    stream.start();
    let askedAtMs = performance.now();
    setInterval(() => {
        const eachMs = store.unit?.replay ? REPLAY_EACH_MS : UNIT_EACH_MS;
        if (!document.hidden && performance.now() - askedAtMs >= eachMs) {
            askedAtMs = performance.now();
            void readUnit().catch(() => {});
        }
    }, REPLAY_EACH_MS);
}

requestAnimationFrame(frame);
void start();
