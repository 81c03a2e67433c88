#pragma once

#include "Sender/Session/ScriptedReceiver.h"
#include "Sender/VideoControl.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace velmora::test {

/// A control and its receiver, in virtual time.
template <class Control>
class SessionStory : public testing::Test {
  protected:
    ~SessionStory() override {
        control.reset();
        QCoreApplication::processEvents();
    }

    static VideoControl::Movie movie() {
        return {.url = QUrl(QStringLiteral("http://192.0.2.1:1/t/movie.mp4")),
                .start = 0,
                .duration = 120,
                .uuid = QStringLiteral("6B29FC40-CA47-1067-B31D-00DD010662DA")};
    }
    void renew() {
        control.reset();
        QCoreApplication::processEvents();
        receiver_ = std::make_unique<ScriptedReceiver>(clock);
        events.clear();
    }
    /// Opens and plays.
    VideoControl::Outcome start(const QString& model) {
        control = Control::make(clock, tv().road(model));
        control->onEvent([this](const PlaybackEvent& event) { events.push_back(event); });
        VideoControl::Outcome outcome = run(control->open());
        if (outcome) outcome = run(control->play(movie()));
        return outcome;
    }
    /// Lets time pass until the task is done.
    template <class T>
    T run(QCoro::Task<T> task) {
        std::optional<T> result;
        const auto collecting = collect(task, result);
        for (int step = 0; step < 10'000 && !result; ++step) clock.advance(std::chrono::milliseconds(10));
        EXPECT_TRUE(result) << tv().log.join(u';').toStdString();
        return result.value();
    }

    ScriptedReceiver& tv() { return *receiver_; }

    VirtualClock clock;
    std::shared_ptr<Control> control;
    std::vector<PlaybackEvent> events;

  private:
    template <class T>
    static QCoro::Task<> collect(QCoro::Task<T>& task, std::optional<T>& result) {
        result = co_await task;
    }

    std::unique_ptr<ScriptedReceiver> receiver_ = std::make_unique<ScriptedReceiver>(clock);
};

}  // namespace velmora::test
