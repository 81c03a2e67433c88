#pragma once

#include <QDir>

namespace velmora::test {

/// Movies that look like some, each made once.
class Film {
  public:
    explicit Film(const QDir& folder);

    /// Empty when ffmpeg fails.
    [[nodiscard]] QString feature();
    /// Of nine hours, and much wider than high.
    [[nodiscard]] QString epic();

  private:
    struct Kind;
    [[nodiscard]] QString make(const Kind& kind);
    [[nodiscard]] bool makeScene(const QString& name, const QImage& picture, const Kind& kind);

    QDir folder_;
};

}  // namespace velmora::test
