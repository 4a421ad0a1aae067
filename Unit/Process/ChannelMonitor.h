/** @file
 * The safety monitor of a running channel.
 */
#pragma once

#include "Unit/SafetyMonitor/MonitoredController.h"
#include "Unit/SafetyMonitor/MonitoredHandler.h"
#include "Unit/SafetyMonitor/TransmitterRules.h"
#include "Unit/SafetyMonitor/ViolationStore.h"

#include <optional>
#include <string>

/**
 * Publishes a monitored handler and a monitored controller in the place of a channel's own, so that whoever looks them
 * up from then on calls through the safety rules.
 *
 * For the thread that starts and stops the unit; violations may be read from any. Must outlive the modules, which keep
 * calling what they have found.
 */
class ChannelMonitor
{
public:
    explicit ChannelMonitor(unsigned int nChannel);

    /** Puts back what has not been put back. */
    ~ChannelMonitor();

    ChannelMonitor(const ChannelMonitor&) = delete;
    ChannelMonitor& operator=(const ChannelMonitor&) = delete;

    /**
     * Takes the two places. To be called when handler and controller are published and nobody has looked them up.
     * @return false when there is none of one of them, or it has no table; nothing is changed then
     */
    bool interpose();

    /** Publishes the channel's own again; from now on every call of the handler is a violation. Harmless when done. */
    void putBack();

    unsigned int channel() const { return m_rules.channel(); }
    const ViolationStore& violations() const { return m_violations; }

private:
    /** A name of the broker and whose it is. */
    struct Place
    {
        std::string sName;
        IInterface* pOwn = nullptr;
    };

    static void exchange(const Place& place, IInterface* pPublished, IInterface* pNext);

    ViolationStore m_violations;
    TransmitterRules m_rules;
    std::optional<MonitoredHandler> m_handler;
    std::optional<MonitoredController> m_controller;
    Place m_handlerPlace;
    Place m_controllerPlace;
    bool m_bInterposed = false;
};
