#pragma once

#include <QByteArray>
#include <QList>

namespace velmora {

enum class Key { playPause, back, forward, backMinute, forwardMinute, sound, subtitles, quit };

/// Turns what a terminal sends into keys. Sequences may arrive in pieces.
class KeyReader {
  public:
    [[nodiscard]] QList<Key> read(const QByteArray& bytes);

  private:
    QByteArray sequence_;  ///< an escape sequence whose end has not come yet
};

}  // namespace velmora
