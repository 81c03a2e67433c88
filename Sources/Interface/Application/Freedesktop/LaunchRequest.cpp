#include "Interface/Application/Freedesktop/LaunchRequest.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <utility>

namespace velmora {

using namespace Qt::StringLiterals;

namespace {

using Action = LaunchRequest::Action;

constexpr std::array<std::pair<Action, QLatin1StringView>, 5> actionNames{{
    {Action::activate, "activate"_L1},
    {Action::open, "open"_L1},
    {Action::newWindow, "new-window"_L1},
    {Action::chooseMovie, "open-movie"_L1},
    {Action::quit, "quit"_L1},
}};

}  // namespace

QString LaunchRequest::name(Action action) {
    return std::ranges::find(actionNames, action, &decltype(actionNames)::value_type::first)->second;
}

std::optional<Action> LaunchRequest::actionNamed(QStringView name) {
    const auto found =
        std::ranges::find_if(actionNames, [name](const auto& each) { return each.second == name; });
    return found == actionNames.end() ? std::nullopt : std::optional(found->first);
}

QByteArray LaunchRequest::toLine() const {
    QJsonArray uris;
    for (const QUrl& movie : movies) uris << QString::fromUtf8(movie.toEncoded());
    const QJsonObject request{
        {u"action"_s, name(action)}, {u"movies"_s, uris}, {u"activation-token"_s, activationToken}};
    return QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<LaunchRequest> LaunchRequest::fromLine(QByteArrayView line) {
    const QJsonDocument document = QJsonDocument::fromJson(line.toByteArray());
    if (!document.isObject()) return std::nullopt;
    const auto action = actionNamed(document[u"action"].toString());
    if (!action || !document[u"movies"].isArray()) return std::nullopt;
    QStringList uris;
    const QJsonArray movies = document[u"movies"].toArray();
    for (const auto& uri : movies) uris << uri.toString();
    return LaunchRequest{*action, locations(uris), document[u"activation-token"].toString()};
}

QList<QUrl> LaunchRequest::locations(const QStringList& uris) {
    QList<QUrl> locations;
    for (const QString& uri : uris) {
        const QUrl url(uri, QUrl::StrictMode);
        if (url.isLocalFile())
            locations << QUrl::fromLocalFile(QDir::cleanPath(url.toLocalFile()));
        else if (url.isValid() && !url.isRelative())
            locations << url;
    }
    return locations;
}

}  // namespace velmora
