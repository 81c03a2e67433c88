#include "Sender/Message.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

bool sameName(QByteArrayView a, QByteArrayView b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

bool isControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f;
}

bool isTokenCharacter(char c) {
    return static_cast<unsigned char>(c) > 0x20 && static_cast<unsigned char>(c) < 0x7f &&
           !QByteArrayView("()<>@,;:\\\"/[]?={}").contains(c);
}

// A value can come from outside (a name, a challenge); it must not be able to begin a line of its own.
QByteArray withoutControls(QByteArray value) {
    value.removeIf(isControl);
    return value.trimmed();
}

QByteArray encodedMessage(QByteArray bytes, const Headers& headers, const QByteArray& body) {
    bytes += "\r\n";
    for (const auto& [name, rawValue] : headers) {
        const QByteArray value = withoutControls(rawValue);
        if (value.isEmpty() || sameName(name, "Content-Length")) continue;
        bytes += name + ": " + value + "\r\n";
    }
    return bytes + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

bool isKnownVersion(QByteArrayView version) {
    return version == "HTTP/1.1" || version == "HTTP/1.0" || version == "RTSP/1.0";
}

bool parseStartLine(QByteArrayView line, Response& response) {
    const qsizetype space = line.indexOf(' ');
    const QByteArrayView status = space < 0 ? QByteArrayView() : line.sliced(space + 1).trimmed();
    if (space < 0 || !isKnownVersion(line.first(space)) || status.size() < 3) return false;
    if (status.size() > 3 && status[3] != ' ') return false;
    if (!std::all_of(status.begin(), status.begin() + 3, [](char c) { return c >= '0' && c <= '9'; }))
        return false;
    response.version = line.first(space).toByteArray();
    response.status = status.first(3).toInt();
    response.reason = status.sliced(3).trimmed().toByteArray();
    return response.status >= 100;
}

bool parseStartLine(QByteArrayView line, Request& request) {
    const qsizetype first = line.indexOf(' ');
    const qsizetype last = line.lastIndexOf(' ');
    if (first <= 0 || last <= first + 1 || !isKnownVersion(line.sliced(last + 1))) return false;
    const QByteArrayView method = line.first(first);
    const QByteArrayView target = line.sliced(first + 1, last - first - 1);
    if (!std::ranges::all_of(method, isTokenCharacter) || target.contains(' ')) return false;
    request.version = line.sliced(last + 1).toByteArray();
    request.method = method.toByteArray();
    request.target = target.toByteArray();
    return true;
}

// The leading number: old Kodi forgets the line end behind it, so that the next header is glued on.
std::optional<qsizetype> leadingNumber(QByteArrayView value) {
    const auto end = std::ranges::find_if(value, [](char c) { return c < '0' || c > '9'; });
    const QByteArrayView digits = value.first(end - value.begin());
    if (digits.isEmpty() || digits.size() > 15) return std::nullopt;
    return digits.toLongLong();
}

}  // namespace

void Headers::append(QByteArray name, QByteArray value) {
    entries_.append(Entry(std::move(name), std::move(value)));
}

void Headers::set(QByteArray name, QByteArray value) {
    remove(name);
    append(std::move(name), std::move(value));
}

void Headers::remove(QByteArrayView name) {
    entries_.removeIf([name](const Entry& entry) { return sameName(entry.first, name); });
}

bool Headers::contains(QByteArrayView name) const {
    return std::ranges::any_of(entries_, [name](const Entry& entry) { return sameName(entry.first, name); });
}

QByteArray Headers::value(QByteArrayView name) const {
    const auto found =
        std::ranges::find_if(entries_, [name](const Entry& entry) { return sameName(entry.first, name); });
    return found == entries_.end() ? QByteArray() : found->second;
}

QByteArray Request::path() const {
    const qsizetype query = target.indexOf('?');
    return query < 0 ? target : target.first(query);
}

QByteArray Request::encoded() const {
    return encodedMessage(method + ' ' + target + ' ' + version, headers, body);
}

QByteArray Response::encoded() const {
    return encodedMessage(version + ' ' + QByteArray::number(status) + ' ' + reason, headers, body);
}

template <class Message>
std::expected<std::optional<Message>, QString> MessageReader<Message>::next() {
    if (fault_.isEmpty() && !headDone_) {
        const Step head = readHead();
        if (!head) fault_ = head.error();
    }
    if (!fault_.isEmpty()) return std::unexpected(fault_);
    if (!headDone_ || buffer_.size() - cursor_ < bodyBytes_) return std::nullopt;
    return takeMessage();
}

template <class Message>
QByteArray MessageReader<Message>::takeRest() {
    cursor_ = 0;
    started_ = headDone_ = false;
    message_ = Message();
    return std::exchange(buffer_, {});
}

template <class Message>
typename MessageReader<Message>::Step MessageReader<Message>::readHead() {
    while (!headDone_) {
        QByteArrayView line;
        const Step complete = takeLine(line);
        if (!complete || !*complete) return complete;
        if (!started_) {
            if (line.isEmpty()) continue;  // stray line ends between messages
            if (!parseStartLine(line, message_)) return std::unexpected(u"not a message of this protocol"_s);
            started_ = true;
        } else if (line.isEmpty()) {
            return measureBody();
        } else if (const Step header = readHeader(line); !header) {
            return header;
        }
    }
    return true;
}

template <class Message>
typename MessageReader<Message>::Step MessageReader<Message>::takeLine(QByteArrayView& line) {
    const qsizetype end = buffer_.indexOf('\n', cursor_);
    const qsizetype length = (end < 0 ? buffer_.size() : end) - cursor_;
    if (length > limits_.lineBytes || cursor_ + length > limits_.headBytes)
        return std::unexpected(u"the head of the message is too long"_s);
    if (end < 0) return false;
    line = QByteArrayView(buffer_).sliced(cursor_, length);
    if (line.endsWith('\r')) line.chop(1);
    cursor_ = end + 1;
    if (std::ranges::any_of(line, isControl)) return std::unexpected(u"control characters in the head"_s);
    return true;
}

template <class Message>
typename MessageReader<Message>::Step MessageReader<Message>::readHeader(QByteArrayView line) {
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0 || !std::ranges::all_of(line.first(colon), isTokenCharacter))
        return std::unexpected(u"a header line without a name"_s);
    if (message_.headers.size() >= limits_.headerCount) return std::unexpected(u"too many headers"_s);
    message_.headers.append(line.first(colon).toByteArray(), line.sliced(colon + 1).trimmed().toByteArray());
    return true;
}

template <class Message>
typename MessageReader<Message>::Step MessageReader<Message>::measureBody() {
    if (message_.headers.contains("Transfer-Encoding"))
        return std::unexpected(u"a body of unannounced length"_s);
    std::optional<qsizetype> length;
    for (const auto& [name, value] : message_.headers) {
        if (!sameName(name, "Content-Length")) continue;
        const auto number = leadingNumber(value);
        if (!number || (length && *length != *number))
            return std::unexpected(u"a length that is no number"_s);
        length = number;
    }
    bodyBytes_ = length.value_or(0);
    if (bodyBytes_ > limits_.bodyBytes) return std::unexpected(u"the body is too long"_s);
    headDone_ = true;
    return true;
}

template <class Message>
Message MessageReader<Message>::takeMessage() {
    message_.body = buffer_.sliced(cursor_, bodyBytes_);
    buffer_.remove(0, cursor_ + bodyBytes_);
    cursor_ = 0;
    started_ = headDone_ = false;
    return std::exchange(message_, Message());
}

template class MessageReader<Request>;
template class MessageReader<Response>;

}  // namespace velmora
