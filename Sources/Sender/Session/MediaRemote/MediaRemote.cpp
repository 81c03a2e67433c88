#include "Sender/Session/MediaRemote/MediaRemote.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace velmora::MediaRemote {

namespace {

constexpr size_t mostMessages = 64;  // of one frame

Envelope envelope(Type type, const QString& identifier = {}) {
    Envelope message;
    message.set_type(type);
    if (!identifier.isEmpty()) message.set_identifier(identifier.toStdString());
    return message;
}

void appendLength(QByteArray& bytes, size_t length) {
    for (; length >= 0x80; length >>= 7) bytes.append(static_cast<char>(length | 0x80));
    bytes.append(static_cast<char>(length));
}

// Takes the length off the front; nothing when there is none, or one that no frame can hold.
std::optional<qsizetype> takeLength(QByteArrayView& bytes) {
    constexpr qsizetype mostDigits = 4;
    qsizetype length = 0;
    for (qsizetype digit = 0; digit < std::min(mostDigits, bytes.size()); ++digit) {
        const auto byte = static_cast<uchar>(bytes[digit]);
        length |= qsizetype(byte & 0x7f) << (7 * digit);
        if (byte < 0x80) {
            bytes = bytes.sliced(digit + 1);
            return length;
        }
    }
    return std::nullopt;
}

std::optional<Envelope> parsed(QByteArrayView bytes) {
    Envelope message;
    if (bytes.size() > std::numeric_limits<int>::max()) return std::nullopt;
    if (!message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) return std::nullopt;
    return message;
}

}  // namespace

// What a phone's own remote control says of itself: receivers are known to answer it.
Envelope introduction(const Identity& identity, const QString& identifier) {
    Envelope message = envelope(deviceInfo, identifier);
    auto& info = *message.mutable_device_info();
    info.set_unique_identifier(identity.identifier.toStdString());
    info.set_name(identity.name.toStdString());
    info.set_model_name("iPhone");
    info.set_system_build("20F66");
    info.set_application("com.apple.TVRemote");
    info.set_application_version("344.28");
    info.set_protocol_version(1);
    info.set_last_supported_type(108);
    info.set_supports_system_pairing(true);
    info.set_allows_pairing(true);
    info.set_system_media_application("com.apple.TVMusic");
    info.set_supports_acl(true);
    info.set_supports_shared_queue(true);
    info.set_supports_extended_motion(true);
    info.set_shared_queue_version(2);
    info.set_device_class(1);
    info.set_logical_device_count(1);
    return message;
}

Envelope connected() {
    Envelope message = envelope(connectionState);
    message.mutable_connection_state()->set_state(2);
    return message;
}

Envelope updatesWish(const QString& identifier) {
    Envelope message = envelope(wantedUpdates, identifier);
    auto& wanted = *message.mutable_wanted_updates();
    wanted.set_artwork(false);
    wanted.set_now_playing(true);
    wanted.set_volume(false);
    wanted.set_keyboard(false);
    wanted.set_output_devices(false);
    return message;
}

Envelope heartbeat(const QString& identifier) {
    Envelope message = envelope(generic, identifier);
    message.mutable_generic();
    return message;
}

Envelope wake() {
    Envelope message = envelope(wakeDevice);
    message.mutable_wake_device();
    return message;
}

Envelope command(Command command, std::optional<double> position,
                 const std::optional<remote::PlayerPath>& player, const QString& identifier) {
    Envelope message = envelope(sendCommand, identifier);
    auto& order = *message.mutable_send_command();
    order.set_command(static_cast<int>(command));
    if (position) order.mutable_options()->set_playback_position(*position);
    if (player) *order.mutable_player_path() = *player;
    return message;
}

std::optional<QString> failureIn(const Envelope& answer) {
    const auto& result = answer.command_result();
    if (answer.error_code() != 0) return u"error %1"_s.arg(answer.error_code());
    if (result.send_error() != 0) return u"send error %1"_s.arg(result.send_error());
    if (result.handler_status() != 0) return u"status %1"_s.arg(result.handler_status());
    if (result.details().send_error() != 0) return u"send error %1"_s.arg(result.details().send_error());
    for (const auto& status : result.details().statuses())
        if (status.code() != 0) return u"status %1"_s.arg(status.code());
    return std::nullopt;
}

QByteArray packed(const Envelope& message) {
    const std::string bytes = message.SerializeAsString();
    QByteArray result;
    appendLength(result, bytes.size());
    return result.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

std::optional<std::vector<Envelope>> unpacked(QByteArrayView bytes) {
    std::vector<Envelope> messages;
    while (!bytes.isEmpty()) {
        if (messages.size() == mostMessages) return std::nullopt;
        // Some receivers leave the length out, of one message alone. It then begins with the tag of its type,
        // which no second tag follows: that would be a message of eight bytes.
        constexpr char tagOfType = 0x08;
        const bool isBare =
            bytes.front() == tagOfType &&
            bytes.sliced(1, std::min<qsizetype>(1, bytes.size() - 1)) != QByteArrayView(&tagOfType, 1);
        QByteArrayView one = bytes;
        if (isBare) {
            bytes = {};
        } else {
            const auto length = takeLength(bytes);
            if (!length || *length > bytes.size()) return std::nullopt;
            one = bytes.first(*length);
            bytes = bytes.sliced(*length);
        }
        auto message = parsed(one);
        if (!message) return std::nullopt;
        messages.push_back(*std::move(message));
    }
    return messages;
}

}  // namespace velmora::MediaRemote
