/** @file
 * The violations of a channel, kept for whoever reports them.
 */
#pragma once

#include "Unit/SafetyMonitor/SafetyViolation.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

/**
 * Counts every violation and keeps the first few of each rule, so that a frequent one does not hide the others.
 *
 * One thread adds; any thread reads, meanwhile as well. Adding allocates nothing and waits for nobody.
 */
class ViolationStore final : public IViolationReceiver
{
public:
    static constexpr std::size_t KEPT_OF_EACH_RULE = 3;
    static constexpr std::size_t CAPACITY = KEPT_OF_EACH_RULE * SAFETY_RULES;

    /** Called with each violation after it was stored, in the thread that broke the rule; must not throw. */
    using Callback = std::function<void(const SafetyViolation&)>;

    /** @param callback empty for none */
    explicit ViolationStore(Callback callback = {})
        : m_callback(std::move(callback)), m_pKept(std::make_unique<std::array<SafetyViolation, CAPACITY>>())
    {}

    ViolationStore(const ViolationStore&) = delete;
    ViolationStore& operator=(const ViolationStore&) = delete;
    ~ViolationStore() = default;

    void onViolation(const SafetyViolation& violation) noexcept override
    {
        const auto nRule = static_cast<std::size_t>(violation.eRule);
        if (nRule >= SAFETY_RULES) {
            return;
        }
        const std::size_t nKept = m_nKept.load(std::memory_order_relaxed);
        if (m_counts[nRule].load(std::memory_order_relaxed) < KEPT_OF_EACH_RULE) {
            (*m_pKept)[nKept] = violation;
            m_nKept.store(nKept + 1, std::memory_order_release);
        }
        m_counts[nRule].fetch_add(1, std::memory_order_relaxed);
        if (m_callback) {
            m_callback(violation);
        }
    }

    /** @return how many are kept; never goes back. Any thread */
    std::size_t kept() const noexcept { return m_nKept.load(std::memory_order_acquire); }

    /** @param nIndex below kept(). Any thread */
    const SafetyViolation& at(std::size_t nIndex) const { return m_pKept->at(nIndex); }

    /** @return how often a rule was broken. Any thread */
    std::uint32_t count(ESafetyRule eRule) const { return m_counts.at(static_cast<std::size_t>(eRule)).load(); }

    /** @return how often any rule was broken. Any thread */
    std::uint64_t total() const
    {
        std::uint64_t nTotal = 0;
        for (const auto& count : m_counts) {
            nTotal += count.load(std::memory_order_relaxed);
        }
        return nTotal;
    }

private:
    Callback m_callback;
    std::unique_ptr<std::array<SafetyViolation, CAPACITY>> m_pKept;
    std::atomic<std::size_t> m_nKept{0};
    std::array<std::atomic<std::uint32_t>, SAFETY_RULES> m_counts{};
};
