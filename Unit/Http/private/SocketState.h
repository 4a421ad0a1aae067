/** @file
 * What the system knows of a connection, and how a connection ends politely.
 */
#pragma once

#include <chrono>
#include <optional>
#include <string>

/** @return the time since a byte of data came in or went out; nothing when the system does not tell */
std::optional<std::chrono::milliseconds> silenceOf(int nSocket);

/** Lets the system hold little that a slow peer has not taken yet, so that a stream is not seconds behind. */
void limitUnsent(int nSocket);

/** Sends a short text as far as it goes out without waiting. */
void sendAtOnce(int nSocket, const std::string& sText);

/** Drops what has arrived unread: were it still there at the close, the peer would lose our answer to a reset. */
void dropArrived(int nSocket);

/** Ends our side, then drops what the peer still sends until it ends its own, for a bounded time and amount. */
void lingerUntilPeerEnds(int nSocket);
