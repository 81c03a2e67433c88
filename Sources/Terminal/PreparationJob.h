#pragma once

#include "Preparation/Preparer.h"

#include <QObject>
#include <QUrl>

#include <expected>
#include <thread>

namespace velmora {

struct PreparedMovie {
    Preparer::Result result;
    double duration = 0;  ///< of the file to play, in seconds; 0 when unknown
};

/// One preparation on a thread of its own, its news brought to the main thread. Destroying it cancels the
/// preparation and waits for it.
class PreparationJob : public QObject {
    Q_OBJECT

  public:
    using Outcome = std::expected<PreparedMovie, PrepareError>;

    using QObject::QObject;
    ~PreparationJob() override;

    /// Replaces what ran before.
    void start(const QUrl& movie, bool reEncode);

    /// `finished` still comes, as soon as what runs has ended and cleaned up.
    void cancel() { thread_.request_stop(); }

    /// From `finished` on.
    [[nodiscard]] const Outcome& outcome() const { return outcome_; }

  Q_SIGNALS:
    void updated(const velmora::Preparer::Update& update);
    void finished();

  private:
    void post(const Preparer::Update& update);

    Outcome outcome_;
    std::jthread thread_;
};

}  // namespace velmora
