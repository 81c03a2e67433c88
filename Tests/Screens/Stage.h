#pragma once

#include "Desk/Application.h"
#include "Desk/FileDrag.h"
#include "Desk/TelevisionProcess.h"
#include "Screens/Film.h"

#include <QDir>

#include <optional>

namespace velmora::test {

/// How the pictures of a round are to look.
struct Look {
    QString name;
    bool isDark = true;
    double scale = 1;
    QSize size{640, 460};
    QStringList arguments{};  ///< for the toolkit
};

/// The program on a desk, brought from state to state to be pictured. Once something did not come about,
/// nothing more is done in its story.
class Stage {
  public:
    Stage(const Look& look, Film& film, const QDir& folder);

    /// Ready for another story, as on a computer where the program never ran, but movies stay prepared. What
    /// did not come about in the one before; empty when all did.
    [[nodiscard]] QString startOver();

    [[nodiscard]] Desk& desk() { return *desk_; }
    [[nodiscard]] Film& film() { return film_; }
    [[nodiscard]] DesktopWindow window() const;

    /// The same movie's own copy on the desk, where a round prepares it once.
    [[nodiscard]] QString movie(const QString& original);
    /// What the program finds as ffmpeg and ffprobe from now on: a script in which `$0` is in a folder of its
    /// own and `$tool` the real one. Of the next start.
    void disguise(const QString& tool, const QString& script);

    /// In a window of the look's size.
    void start(const QStringList& arguments = {}, const QMap<QString, QString>& environment = {});
    void quit();

    /// False, once, sets the problem.
    bool expect(bool isSo, const QString& what);
    /// Waits for it. A trailing "*" in a name stands for any end, an empty one for anything.
    void see(const QString& role, const QString& name);
    /// Waits until it can be pressed too.
    void seeEnabled(const QString& role, const QString& name);
    void miss(const QString& role, const QString& name);
    void press(const QString& role, const QString& name);
    void click(const QString& role, const QString& name);
    void key(QKeyCombination keys);
    void type(const QString& text);
    void choose(const QString& television);
    /// Puts the pointer there; without a place, where it points at nothing.
    void point(const std::optional<QPoint>& place = {});
    [[nodiscard]] QPoint middleOf(const QString& role, const QString& name);
    /// On the timeline, from 0 to 1.
    [[nodiscard]] QPoint placeAt(double share);
    [[nodiscard]] bool hasLogged(const QString& words) const { return application_->log().contains(words); }
    [[nodiscard]] bool hasWindows(qsizetype count) const;
    [[nodiscard]] bool shows(const QString& role, const QString& name) const;
    /// Of the only one of its role; 0 without it.
    [[nodiscard]] double valueOf(const QString& role) const;
    [[nodiscard]] QString descriptionOf(const QString& role) const;
    [[nodiscard]] bool waitUntil(const std::function<bool()>& condition);

    /// Saves the main window, or the one in front, once it stands still.
    void take(const QString& name);
    void takeFront(const QString& name);

  private:
    void save(const QString& name, quint32 window);
    [[nodiscard]] bool isLost() const { return !problem_.isEmpty(); }

    Look look_;
    Film& film_;
    QDir folder_;
    std::unique_ptr<Desk> desk_;
    std::unique_ptr<Application> application_;
    quint32 window_ = 0;
    QString problem_;
};

}  // namespace velmora::test
