/** Waits that double from one failure to the next, each drawn from its upper half so that pages do not return together. */
export class Backoff {
    /** @param {number} firstMs @param {number} mostMs @param {() => number} random 0 to 1 */
    constructor(firstMs, mostMs, random = Math.random) {
        this.firstMs = firstMs;
        this.mostMs = mostMs;
        this.random = random;
        this.failures = 0;
    }

    /** @returns {number} milliseconds to wait before the next try */
    next() {
        const ceiling = Math.min(this.mostMs, this.firstMs * 2 ** Math.min(this.failures, 20));
        ++this.failures;
        return ceiling * (0.5 + 0.5 * this.random());
    }

    reset() {
        this.failures = 0;
    }
}
