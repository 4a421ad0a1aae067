// Before the first paint, so that a page in the other theme does not flash. A classic script for that reason.
(() => {
    const inLink = /(?:^#|&)theme=(dark|light)(?:&|$)/.exec(location.hash)?.[1];
    /** @type {string|null} */
    let kept = null;
    try {
        kept = localStorage.getItem("theme");
    } catch {
        // Storage may be forbidden; then the system's choice counts.
    }
    const theme = inLink ?? kept;
    if (theme === "dark" || theme === "light") {
        document.documentElement.dataset["theme"] = theme;
    }
})();
