#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace velmora {

/// What a start of the application, or the desktop, asks of the process that runs already. A value.
struct LaunchRequest {
    enum class Action {
        activate,  ///< bring it forward, with a window
        open,      ///< `movies`
        newWindow,
        chooseMovie,  ///< ask the user for one
        quit,
    };

    Action action = Action::activate;
    QList<QUrl> movies{};
    /// By which the desktop lets the window take the focus; empty when it gave none.
    QString activationToken{};

    friend bool operator==(const LaunchRequest&, const LaunchRequest&) = default;

    /// As the desktop entry names it.
    [[nodiscard]] static QString name(Action action);
    [[nodiscard]] static std::optional<Action> actionNamed(QStringView name);

    /// As one line of text, for where there is no session bus.
    [[nodiscard]] QByteArray toLine() const;
    /// Nothing for a line that is not a request.
    [[nodiscard]] static std::optional<LaunchRequest> fromLine(QByteArrayView line);

    /// Locations as they come over the bus. What is not a URL is left out.
    [[nodiscard]] static QList<QUrl> locations(const QStringList& uris);
};

}  // namespace velmora
