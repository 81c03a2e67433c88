#pragma once

#include "Interface/Application/Freedesktop/LaunchRequest.h"

#include <QString>
#include <QStringList>

#include <expected>

namespace velmora {

/// What `velmora` was started for. A value.
struct LaunchOptions {
    enum class Action {
        start,  ///< `request`
        serve,  ///< wait for requests, without a window: the session bus started us and has one
        help,
        version,
    };

    Action action = Action::start;
    LaunchRequest request;

    /// `arguments` come without the program's name; relative paths start at `workingFolder`. Fails with the
    /// reason in plain words.
    [[nodiscard]] static std::expected<LaunchOptions, QString> parse(const QStringList& arguments,
                                                                     const QString& workingFolder);

    [[nodiscard]] static QString help();
};

}  // namespace velmora
