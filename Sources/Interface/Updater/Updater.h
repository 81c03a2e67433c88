#pragma once

#include "Interface/Updater/UpdateFeed.h"
#include "Interface/Updater/UpdateSource.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>

namespace velmora {

class Preferences;

/// Looks, when the user asks, whether there is a newer Velmora. Main thread only. It never contacts anyone by
/// itself, nor at all in a development build.
class Updater : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY canCheckForUpdatesChanged FINAL)

  public:
    /// What this build is and where its news comes from. A value.
    struct Build {
        QString version;   ///< "0.0.0" or empty: a development build
        QUrl feed{};       ///< https; empty when there is none
        QByteArray key{};  ///< the publisher's Ed25519 key
        /// Who keeps this installation current, for the user ("your system's package manager"); empty when
        /// nobody does.
        QString keeper{};

        [[nodiscard]] bool isDevelopment() const { return version.isEmpty() || version == u"0.0.0"; }
    };

    /// What a check came to, for the user.
    struct Outcome {
        QString title;
        QString text;
        QUrl page{};  ///< where the newer version is; empty when there is none

        friend bool operator==(const Outcome&, const Outcome&) = default;
    };

    /// The source and the preferences must outlive it.
    Updater(Build build, UpdateSource& source, Preferences& preferences, QObject* parent = nullptr);

    /// A development build never can; another can unless it is at it.
    [[nodiscard]] bool canCheckForUpdates() const { return canCheckForUpdates_; }

    /// `checked` follows, from the event loop; nothing when a check cannot be started now.
    Q_INVOKABLE void checkForUpdates();

  Q_SIGNALS:
    void canCheckForUpdatesChanged();
    void checked(const velmora::Updater::Outcome& outcome);

  private:
    void answered(const UpdateSource::Answer& answer);
    [[nodiscard]] Outcome judge(const UpdateSource::Answer& answer);
    void finish(const Outcome& outcome);
    void setCanCheck(bool can);

    Build build_;
    UpdateSource& source_;
    Preferences& preferences_;
    bool canCheckForUpdates_;
};

}  // namespace velmora
