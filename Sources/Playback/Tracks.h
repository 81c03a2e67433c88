#pragma once

#include "System/Player.h"

#include <QHash>
#include <QStringList>

#include <optional>

/// What a viewer is offered of an item's tracks, and what is on unasked. Pure functions.
namespace velmora::Tracks {

/// What to call each option, by `MediaOption::identifier`.
using Names = QHash<QString, QString>;

/// The options that stand for a whole track of the file, in its order.
[[nodiscard]] QList<MediaOption> real(const std::optional<MediaGroup>& group);

/// `subtitleTitles` are the titles of the real subtitle tracks, in their order, as far as they are known;
/// they say more than the player's own names, which are made distinct where they must serve.
[[nodiscard]] Names names(const std::optional<MediaGroup>& subtitles, const std::optional<MediaGroup>& audio,
                          const QStringList& subtitleTitles);

/// The subtitles that suit somebody who prefers these languages (ISO 639-2/T, best first); absent when no
/// track is in one of them.
[[nodiscard]] std::optional<MediaOption> defaultSubtitle(const MediaGroup& subtitles, const Names& names,
                                                         const QStringList& preferredLanguages);

}  // namespace velmora::Tracks
