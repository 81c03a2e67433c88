#pragma once

#include "Sender/Message.h"

#include <QObject>
#include <QTcpSocket>
#include <QUrl>

#include <memory>
#include <optional>

namespace velmora::test {

/// Gets a movie as a television does: HEAD, the first two bytes, the index, and from then on open-ended
/// ranges that it hangs up on when it has read enough ahead. Takes nothing that is not exactly right.
class MediaFetcher : public QObject {
    Q_OBJECT

  public:
    explicit MediaFetcher(QUrl url, QObject* parent = nullptr);
    ~MediaFetcher() override;

    void start();
    /// Reads from this share of the movie on; `buffered` tells how far.
    void readFrom(double fraction);

  Q_SIGNALS:
    void opened(double durationSeconds);
    void buffered(double fraction);
    void failed(const QString& reason);

  private:
    enum class Step { head, firstBytes, index, media };
    struct Head {
        int status = 0;
        Headers headers;
    };

    void connectAfresh();
    void request(Step step, const QByteArray& method, const QByteArray& range);
    void receive();
    [[nodiscard]] std::optional<Head> takeHead();
    [[nodiscard]] QString complaint(const Head& head) const;
    void accept(const Head& head);
    void take(const QByteArray& bytes);
    void readIndex(const QByteArray& bytes);
    void takeIndex(const QByteArray& index);
    void finishStep();
    void fail(const QString& reason);

    QUrl url_;
    std::unique_ptr<QTcpSocket> socket_;
    QByteArray unsent_;
    QByteArray head_;
    bool inHead_ = true;
    Step step_ = Step::head;
    qint64 size_ = 0;
    qint64 offset_ = 0;     // where the range in progress begins
    qint64 remaining_ = 0;  // of its body
    qint64 taken_ = 0;
    QByteArray boxes_;  // from `offset_` on, where a box begins
};

}  // namespace velmora::test
