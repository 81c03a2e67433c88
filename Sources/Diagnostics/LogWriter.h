#pragma once

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace velmora {

/// One thread and one queue that bring lines to the log file and to standard error, in the order of the
/// calls. Errors are dropped; the next line is tried all the same.
class LogWriter {
  public:
    struct Line {
        QByteArray forFile;
        QByteArray forStandardError;  ///< empty: not for it
    };

    /// `file` and its folder are made when they are missing; without them lines reach standard error only.
    explicit LogWriter(const QString& file);
    ~LogWriter();
    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

    /// Any thread; does not wait for the disk.
    void add(Line line);

    /// Returns when every line added before is written. From then on `add` writes at once, on its caller's
    /// thread: for the end of the process, which does not wait for a queue.
    void finish();

  private:
    void run();
    void write(const Line& line) const;

    int file_ = -1;
    std::mutex lock_;
    std::condition_variable changed_;
    std::vector<Line> queue_;
    bool finishing_ = false;
    bool ended_ = false;  ///< the thread has written its last line
    std::thread thread_;
};

}  // namespace velmora
