#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <expected>
#include <functional>
#include <optional>

class QDBusPendingCallWatcher;

namespace velmora {

/// The desktop's own dialog for choosing a file or a folder, as the desktops' portal offers it. Main thread
/// only; one dialog at a time.
class FileChooserPortal : public QObject {
    Q_OBJECT

  public:
    struct Question {
        QString title;
        bool wantsFolder = false;  ///< else a file
        QStringList extensions{};  ///< lower case, without full stop; of the files offered first
        QString extensionsName{};  ///< what files with these are called
        QString anythingName{};    ///< what all files are called
        QString parentWindow{};    ///< "x11:" and its number; empty where it cannot be said
    };
    enum class Unavailable { noPortal };
    /// What was chosen; nothing when the user decided otherwise.
    using Answer = std::expected<std::optional<QUrl>, Unavailable>;
    using Answered = std::function<void(const Answer&)>;

    explicit FileChooserPortal(QDBusConnection bus, QObject* parent = nullptr);

    /// `answered` is called once from the event loop, unless `cancel` or another question comes before.
    void ask(const Question& question, Answered answered);
    /// Takes the dialog away.
    void cancel();

  private Q_SLOTS:
    void respond(uint response, const QVariantMap& results);

  private:
    void listen(const QString& handle);
    void forgetHandle();
    void noteHandle(const QDBusPendingCallWatcher& call, const QString& asked);
    void answer(const Answer& answer);

    QDBusConnection bus_;
    QString handle_;  ///< of the dialog that is open; empty: none
    Answered answered_;
};

}  // namespace velmora
