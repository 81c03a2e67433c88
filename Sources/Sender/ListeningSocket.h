#pragma once

#include <QString>

#include <expected>

namespace velmora {

/// A listening TCP socket for both IPv4 and IPv6, on every address of this computer; IPv4 alone where the
/// system has no IPv6.
class ListeningSocket {
  public:
    /// Takes the first free port of a range; 0 is any free port.
    [[nodiscard]] static std::expected<ListeningSocket, QString> open(quint16 firstPort, quint16 lastPort);
    ~ListeningSocket();
    ListeningSocket(ListeningSocket&& other) noexcept;
    ListeningSocket& operator=(ListeningSocket&& other) noexcept;

    [[nodiscard]] int descriptor() const { return descriptor_; }
    [[nodiscard]] quint16 port() const;

    /// The descriptor is somebody else's to close from now on.
    void release() { descriptor_ = -1; }

  private:
    explicit ListeningSocket(int descriptor) : descriptor_(descriptor) {}
    int descriptor_;
};

}  // namespace velmora
