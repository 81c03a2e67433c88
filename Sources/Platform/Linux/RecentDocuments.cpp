#include "Platform/Linux/RecentDocuments.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QSaveFile>
#include <QStandardPaths>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace velmora::RecentDocuments {

using namespace Qt::StringLiterals;

namespace {

// No list of anybody's is longer; reading a longer one would hold up the window.
constexpr qint64 longestList = 8 << 20;  // bytes

constexpr QLatin1StringView bookmarkSpace("http://www.freedesktop.org/standards/desktop-bookmarks");
constexpr QLatin1StringView mimeSpace("http://www.freedesktop.org/standards/shared-mime-info");
constexpr QLatin1StringView program("Velmora");

/// Copies a list and puts the file into it.
class Copier {
  public:
    Copier(const QUrl& file, const QByteArray& list, const QDateTime& now)
        : reader_(list),
          writer_(&copy_),
          address_(QString::fromLatin1(file.toEncoded())),
          type_(QMimeDatabase().mimeTypeForFile(file.toLocalFile(), QMimeDatabase::MatchExtension).name()),
          now_(now.toUTC().toString(Qt::ISODateWithMs)) {}

    std::optional<QByteArray> run() {
        while (!reader_.atEnd()) {
            reader_.readNext();
            if (reader_.isStartElement()) {
                startElement();
            } else if (reader_.isEndElement()) {
                endElement();
            } else if (reader_.tokenType() != QXmlStreamReader::Invalid) {
                writer_.writeCurrentToken(reader_);
            }
        }
        if (reader_.hasError() || !isList_) return std::nullopt;
        return copy_;
    }

  private:
    void startElement() {
        if (depth_++ == 0) isList_ = reader_.name() == u"xbel"_s;
        const bool isOurs = depth_ == 2 && reader_.name() == u"bookmark"_s &&
                            reader_.attributes().value(u"href"_s) == address_;
        if (isOurs) {
            isThere_ = isInOurs_ = true;
            return writeBookmarkStart(reader_.attributes().value(u"added"_s).toString());
        }
        if (isInOurs_ && reader_.namespaceUri() == bookmarkSpace && reader_.name() == u"application"_s &&
            reader_.attributes().value(u"name"_s) == program) {
            count_ = reader_.attributes().value(u"count"_s).toInt();
            reader_.skipCurrentElement();
            --depth_;
            return;
        }
        writer_.writeCurrentToken(reader_);
    }

    void endElement() {
        if (isInOurs_ && reader_.namespaceUri() == bookmarkSpace && reader_.name() == u"applications"_s)
            writeApplication();
        if (depth_ == 2) isInOurs_ = false;
        if (--depth_ == 0 && isList_ && !isThere_) writeBookmark();
        writer_.writeCurrentToken(reader_);
    }

    void writeBookmarkStart(const QString& added) {
        writer_.writeStartElement(u"bookmark"_s);
        writer_.writeAttribute(u"href"_s, address_);
        writer_.writeAttribute(u"added"_s, added.isEmpty() ? now_ : added);
        writer_.writeAttribute(u"modified"_s, now_);
        writer_.writeAttribute(u"visited"_s, now_);
    }

    void writeApplication() {
        writer_.writeStartElement(bookmarkSpace, u"application"_s);
        writer_.writeAttribute(u"name"_s, program);
        writer_.writeAttribute(u"exec"_s, u"'velmora %u'"_s);
        writer_.writeAttribute(u"modified"_s, now_);
        writer_.writeAttribute(u"count"_s, QString::number(count_ + 1));
        writer_.writeEndElement();
    }

    void writeBookmark() {
        writeBookmarkStart({});
        writer_.writeStartElement(u"info"_s);
        writer_.writeStartElement(u"metadata"_s);
        writer_.writeAttribute(u"owner"_s, u"http://freedesktop.org"_s);
        writer_.writeStartElement(mimeSpace, u"mime-type"_s);
        writer_.writeAttribute(u"type"_s, type_);
        writer_.writeEndElement();
        writer_.writeStartElement(bookmarkSpace, u"applications"_s);
        writeApplication();
        for (int open = 0; open < 4; ++open) writer_.writeEndElement();
    }

    QXmlStreamReader reader_;
    QByteArray copy_;
    QXmlStreamWriter writer_;
    QString address_;
    QString type_;
    QString now_;
    int depth_ = 0;
    int count_ = 0;  ///< how often we have opened it before
    bool isList_ = false;
    bool isThere_ = false;  ///< the file is in the list already
    bool isInOurs_ = false;
};

QByteArray emptyList() {
    return u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xbel version=\"1.0\" xmlns:bookmark=\"%1\" "
           "xmlns:mime=\"%2\"></xbel>\n"_s.arg(bookmarkSpace, mimeSpace)
               .toUtf8();
}

}  // namespace

QString path() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/recently-used.xbel"_s;
}

std::optional<QByteArray> with(const QUrl& file, const QByteArray& list, const QDateTime& now) {
    return Copier(file, list.isEmpty() ? emptyList() : list, now).run();
}

bool add(const QUrl& file) {
    QByteArray list;
    if (QFile old(path()); old.exists()) {
        if (!old.open(QIODevice::ReadOnly) || old.size() > longestList) return false;
        list = old.readAll();
    }
    const auto changed = with(file, list, QDateTime::currentDateTimeUtc());
    // A new user has no such folder yet.
    QDir().mkpath(QFileInfo(path()).path());
    QSaveFile replacement(path());
    if (!changed || !replacement.open(QIODevice::WriteOnly)) return false;
    // What somebody watches is nobody else's business.
    replacement.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    replacement.write(*changed);
    return replacement.commit();
}

}  // namespace velmora::RecentDocuments
