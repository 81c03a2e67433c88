#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>

#include <vector>

namespace velmora {

/// Bytes that are wiped from memory when they go: keys, seeds and what is derived from a PIN. Its size never
/// changes, so no reallocation leaves a copy behind. Implicitly readable as a view, never as a shared array.
class Secret {
  public:
    Secret() = default;
    /// `size` zero bytes, to be written through `data`.
    explicit Secret(qsizetype size) : bytes_(static_cast<size_t>(size)) {}
    explicit Secret(QByteArrayView bytes) : bytes_(bytes.begin(), bytes.end()) {}
    /// The text as UTF-8.
    [[nodiscard]] static Secret fromText(QStringView text);
    Secret(const Secret&) = default;
    Secret(Secret&&) noexcept = default;
    Secret& operator=(Secret other) noexcept;
    ~Secret();

    [[nodiscard]] uchar* data() { return bytes_.data(); }
    [[nodiscard]] qsizetype size() const { return static_cast<qsizetype>(bytes_.size()); }
    [[nodiscard]] bool isEmpty() const { return bytes_.empty(); }
    [[nodiscard]] Secret first(qsizetype size) const { return Secret(QByteArrayView(*this).first(size)); }
    operator QByteArrayView() const { return {bytes_.data(), size()}; }

    /// A copy that is not wiped: for what goes on the wire or into safe keeping.
    [[nodiscard]] QByteArray toByteArray() const { return QByteArrayView(*this).toByteArray(); }

  private:
    std::vector<uchar> bytes_;
};

}  // namespace velmora
