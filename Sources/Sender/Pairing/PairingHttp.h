#pragma once

/// Where pairing's messages go. The bodies come from HapPairing.h and LegacyPairing.h.
///
/// Every request of a pairing also carries `X-Apple-Client-Name`, without which recent receivers show no PIN,
/// and `Connection: keep-alive`; one connection serves a whole attempt.
namespace velmora {

struct PairingRequest {
    const char* path;
    const char* contentType;  ///< empty without a body
    int homeKitPairing;       ///< the value of `X-Apple-HKP`; 0: no such header
};

namespace PairingHttp {
constexpr char userAgent[] = "AirPlay/320.20";

constexpr PairingRequest pinStart{"/pair-pin-start", "", 3};
constexpr PairingRequest setup{"/pair-setup", "application/octet-stream", 3};
constexpr PairingRequest transientSetup{"/pair-setup", "application/octet-stream", 4};
constexpr PairingRequest verify{"/pair-verify", "application/octet-stream", 3};

constexpr PairingRequest legacyPinStart{"/pair-pin-start", "", 0};
constexpr PairingRequest legacyPinSetup{"/pair-setup-pin", "application/x-apple-binary-plist", 0};
constexpr PairingRequest legacyKeyExchange{"/pair-setup", "application/octet-stream", 0};
constexpr PairingRequest legacyVerify{"/pair-verify", "application/octet-stream", 0};
}  // namespace PairingHttp

}  // namespace velmora
