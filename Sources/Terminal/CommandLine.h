#pragma once

#include <QString>
#include <QStringList>

#include <expected>

namespace velmora {

/// What the user asked `velmora-cast` for. A value.
struct CommandLine {
    enum class Action { cast, prepareOnly, list, forget, help, version };

    Action action = Action::cast;
    QString television;  ///< for `cast` and `forget`: a name, or HOST[:PORT]
    QStringList movies;  ///< exactly one for `cast`, at least one for `prepareOnly`
    bool startOver = false;
    bool reEncode = false;

    /// `arguments` come without the program's name. Fails with the reason in plain words.
    [[nodiscard]] static std::expected<CommandLine, QString> parse(const QStringList& arguments);

    [[nodiscard]] static QString help();
};

}  // namespace velmora
