#include "Terminal/Keys.h"

#include <optional>

namespace velmora {

namespace {

constexpr char escape = '\x1b';

std::optional<Key> plainKey(char byte) {
    switch (byte) {
        case ' ':
            return Key::playPause;
        case 'a':
        case 'A':
            return Key::sound;
        case 's':
        case 'S':
            return Key::subtitles;
        case 'q':
        case 'Q':
            return Key::quit;
        default:
            return std::nullopt;
    }
}

std::optional<Key> arrow(char final) {
    switch (final) {
        case 'A':
            return Key::forwardMinute;
        case 'B':
            return Key::backMinute;
        case 'C':
            return Key::forward;
        case 'D':
            return Key::back;
        default:
            return std::nullopt;
    }
}

/// Past the introducer, a sequence ends with its first byte from '@' on.
bool isComplete(const QByteArray& sequence) {
    return sequence.size() > 2 && sequence.back() >= '@';
}

}  // namespace

QList<Key> KeyReader::read(const QByteArray& bytes) {
    QList<Key> keys;
    const auto add = [&keys](std::optional<Key> key) {
        if (key) keys << *key;
    };
    for (const char byte : bytes) {
        if (byte == escape) {
            sequence_ = QByteArray(1, byte);
        } else if (sequence_.isEmpty()) {
            add(plainKey(byte));
        } else if (sequence_.size() == 1 && byte != '[' && byte != 'O') {
            // The Escape key by itself, or Alt with another key.
            sequence_.clear();
            add(plainKey(byte));
        } else {
            sequence_ += byte;
            if (!isComplete(sequence_)) continue;
            // With a modifier the sequence has parameters ("1;2C"); those keys mean something else.
            if (sequence_.size() == 3) add(arrow(byte));
            sequence_.clear();
        }
    }
    return keys;
}

}  // namespace velmora
