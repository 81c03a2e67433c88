#pragma once

/// What `velmora-cast` leaves to scripts.
namespace velmora {

constexpr int doneStatus = 0;
constexpr int failedStatus = 1;
constexpr int usageStatus = 2;
constexpr int interruptedStatus = 130;  // as shells have it for a program that Ctrl-C ended

}  // namespace velmora
