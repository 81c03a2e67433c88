#include "Companions/Language.h"

#include "Companions/Names.h"

#include <QHash>

#include <unicode/uchar.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace velmora::Language {
namespace {

/// A three-letter code and a blank-separated list of words.
struct Row {
    QStringView code;
    QStringView words;
};

/// ISO 639-2 has two codes for these; the bibliographic one is the word here.
constexpr std::array bibliographicRows = std::to_array<Row>({
    {u"nld", u"dut"}, {u"deu", u"ger"}, {u"fra", u"fre"}, {u"zho", u"chi"}, {u"ces", u"cze"},
    {u"ell", u"gre"}, {u"ron", u"rum"}, {u"slk", u"slo"}, {u"isl", u"ice"}, {u"fas", u"per"},
    {u"msa", u"may"}, {u"mkd", u"mac"}, {u"sqi", u"alb"}, {u"hye", u"arm"}, {u"eus", u"baq"},
    {u"mya", u"bur"}, {u"kat", u"geo"}, {u"cym", u"wel"}, {u"bod", u"tib"},
});

constexpr std::array aliasRows = std::to_array<Row>({
    {u"nld", u"nl dutch nederlands ned"},
    {u"eng", u"en english engels"},
    {u"deu", u"de german deutsch"},
    {u"fra", u"fr french francais français"},
    {u"spa", u"es spanish espanol español"},
    {u"ita", u"it italian italiano"},
    {u"por", u"pt portuguese pt-br"},
    {u"swe", u"sv swedish"},
    {u"nor", u"no nb norwegian"},
    {u"dan", u"da danish"},
    {u"fin", u"fi finnish"},
    {u"pol", u"pl polish"},
    {u"tur", u"tr turkish"},
    {u"rus", u"ru russian"},
    {u"jpn", u"ja japanese"},
    {u"kor", u"ko korean"},
    {u"zho", u"zh chinese"},
    {u"ara", u"ar arabic"},
    {u"heb", u"he hebrew"},
    {u"ces", u"cs czech"},
    {u"ell", u"el greek"},
    {u"hun", u"hu hungarian"},
    {u"ron", u"ro romanian"},
    {u"ukr", u"uk ukrainian"},
    {u"ind", u"id indonesian"},
    {u"tha", u"th thai"},
    {u"vie", u"vi vietnamese"},
    {u"hrv", u"hr"},
    {u"srp", u"sr"},
    {u"bul", u"bg"},
    {u"slk", u"sk"},
    {u"slv", u"sl"},
    {u"lit", u"lt"},
    {u"lav", u"lv"},
    {u"est", u"et"},
    {u"isl", u"is"},
});

/// Three-letter codes that a file name may hold. Other codes are as likely to be words of the title.
constexpr QStringView codesInNames = u"nld eng deu fra spa ita por swe nor dan fin pol tur rus jpn kor zho";

/// The languages that are told from their text, each by its commonest words. In case of a tie the upper one
/// is taken.
constexpr std::array commonWordRows = std::to_array<Row>({
    {u"nld",
     u"de het een niet ik je we dat is en van op zijn maar wat met voor hij ze naar moet nog wel ook"},
    {u"eng",
     u"the you and to of it that is in we this what for have not with but are was don't your just about "
     u"know"},
    {u"deu",
     u"der die das und ich nicht ist du wir sie ein zu es was mit auf für haben aber noch wenn nur "
     u"auch dich"},
    {u"fra", u"le la les je tu de et pas que est un une vous nous il ce ne des pour dans qui mais avec sur"},
    {u"spa", u"el la que de no es un una los las yo te se por con para qué pero lo me mi está como bien"},
});

/// Fewer words than this say too little; more than `mostWords` add nothing but time.
constexpr int fewestWords = 51;
constexpr int mostWords = 6000;

using Table = QHash<QString, QString>;

template <std::size_t size>
Table tableOf(const std::array<Row, size>& rows) {
    Table table;
    for (const Row& row : rows) {
        for (const QStringView word : row.words.split(u' '))
            table.insert(word.toString(), row.code.toString());
    }
    return table;
}

const Table& bibliographic() {
    static const Table table = tableOf(bibliographicRows);
    return table;
}

const Table& aliases() {
    static const Table table = tableOf(aliasRows);
    return table;
}

bool isAsciiLetters(QStringView text) {
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
    });
}

/// The language that a locale identifier ("nl_NL.UTF-8", "nl-NL") begins with.
QString languageSubtag(const QString& identifier) {
    static const QString ends = u"_-.@"_s;
    const auto end = std::find_if(identifier.begin(), identifier.end(),
                                  [](QChar character) { return ends.contains(character); });
    return identifier.left(end - identifier.begin()).toLower();
}

/// The three-letter code for a two- or three-letter one.
std::optional<QString> threeLetters(const QString& language) {
    if (language.size() < 2 || language.size() > 3 || !isAsciiLetters(language)) return {};
    const QString code = QString::fromLatin1(uloc_getISO3Language(language.toLatin1().constData()));
    return code.isEmpty() ? std::nullopt : std::optional(code);
}

bool isPlainC(const QString& locale) {
    return locale == u"C"_s || locale == u"POSIX"_s;
}

/// The locale identifiers of the user's languages in order, read as gettext reads them: a locale that is
/// plain C wants no language at all; else LANGUAGE stands for the locale, and a C in it ends it.
QStringList localeIdentifiers() {
    QString locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (locale.isEmpty()) locale = qEnvironmentVariable(name);
    }
    if (isPlainC(locale)) return {};
    const QString languages = qEnvironmentVariable("LANGUAGE");
    const QStringList entries = (languages.isEmpty() ? locale : languages).split(u':', Qt::SkipEmptyParts);
    return {entries.begin(), std::find_if(entries.begin(), entries.end(), isPlainC)};
}

/// Which rows of `commonWordRows` hold `word`, one bit each.
quint32 languagesOf(const QString& word) {
    static const QHash<QString, quint32> table = [] {
        QHash<QString, quint32> result;
        for (std::size_t row = 0; row < commonWordRows.size(); ++row) {
            for (const QStringView entry : commonWordRows.at(row).words.split(u' ')) {
                result[entry.toString()] |= 1U << row;
            }
        }
        return result;
    }();
    return table.value(word);
}

/// Accents that composing could not join to their letter, and the joiners inside words, belong to the
/// character before them.
bool extendsCharacter(char32_t character) {
    return (U_GET_GC_MASK(static_cast<UChar32>(character)) & U_GC_M_MASK) != 0 || character == U'\u200C' ||
           character == U'\u200D';
}

/// The first words of `text`, in lower case, at most `mostWords`.
QStringList words(const QString& text) {
    const QList<uint> characters = text.normalized(QString::NormalizationForm_C).toLower().toUcs4();
    QStringList result;
    QString word;
    bool isInWord = false;
    for (const char32_t character : characters) {
        if (!extendsCharacter(character)) isInWord = QChar::isLetter(character) || character == U'\'';
        if (isInWord) {
            word += QChar::fromUcs4(character);
        } else if (!word.isEmpty()) {
            result.append(std::exchange(word, {}));
            if (result.size() == mostWords) return result;
        }
    }
    if (!word.isEmpty()) result.append(word);
    return result;
}

}  // namespace

std::optional<QString> normalize(const std::optional<QString>& tag) {
    if (!tag) return {};
    QString text = Names::trimBlanks(tag->normalized(QString::NormalizationForm_C).toLower());
    const auto separator = std::find_if(
        text.begin(), text.end(), [](QChar character) { return character == u'-' || character == u'_'; });
    if (Names::characterCount(text) >= 4) text.truncate(separator - text.begin());
    if (text == u"und"_s || text == u"unknown"_s) return {};
    for (const Table* table : {&bibliographic(), &aliases()}) {
        if (const auto entry = table->constFind(text); entry != table->cend()) return *entry;
    }
    const qsizetype count = Names::characterCount(text);
    if (count == 3) return text;
    return count == 2 ? threeLetters(text) : std::nullopt;
}

QStringList preferred() {
    QStringList result;
    for (const QString& identifier : localeIdentifiers()) {
        const QString language = languageSubtag(identifier);
        const std::optional<QString> code = threeLetters(language);
        if (!code) continue;
        // A Norwegian's locale says "nb", whose code is "nob", while files say "nor" for the same language.
        for (const QString& each : {*code, normalize(language).value_or(*code)}) {
            if (!result.contains(each)) result.append(each);
        }
    }
    return result;
}

std::optional<QString> fromFilename(const QString& name, const QString& basename) {
    static const QList<QStringView> accepted = codesInNames.split(u' ');
    const bool namesMovie = Names::beginsWith(name, basename);
    // The title's own words ("The Dutch", "Das Boot") must not be read as languages.
    const QString rest = namesMovie ? Names::dropFirst(name, Names::characterCount(basename)) : name;
    QStringList pieces = Names::pieces(rest);
    std::reverse(pieces.begin(), pieces.end());
    for (const QString& piece : std::as_const(pieces)) {
        for (const Table* table : {&aliases(), &bibliographic()}) {
            if (const auto entry = table->constFind(piece); entry != table->cend()) return *entry;
        }
        if (accepted.contains(piece)) return piece;
    }
    return {};
}

std::optional<QString> detect(const QString& text) {
    const QStringList considered = words(text);
    if (considered.size() < fewestWords) return {};
    std::array<int, commonWordRows.size()> hits{};
    for (const QString& word : considered) {
        const quint32 languages = languagesOf(word);
        for (std::size_t row = 0; row < hits.size(); ++row)
            hits.at(row) += ((languages >> row) & 1U) != 0 ? 1 : 0;
    }
    const auto best = std::max_element(hits.begin(), hits.end());
    // More than one word in eight has to be among the commonest of its language.
    if (considered.size() >= 8 * qsizetype{*best}) return {};
    return commonWordRows.at(static_cast<std::size_t>(best - hits.begin())).code.toString();
}

std::optional<QString> displayName(const QString& code) {
    if (code.size() < 2 || code.size() > 3 || !isAsciiLetters(code)) return {};
    const QStringList identifiers = localeIdentifiers();
    const QByteArray locale =
        identifiers.isEmpty() ? QByteArrayLiteral("en") : identifiers.first().toLatin1();
    std::array<UChar, 128> buffer{};
    UErrorCode status = U_ZERO_ERROR;
    const QByteArray language = code.toLatin1();
    const int length = uloc_getDisplayLanguage(language.constData(), locale.constData(), buffer.data(),
                                               buffer.size(), &status);
    if (U_FAILURE(status)) return {};
    const QString name = QString::fromUtf16(buffer.data(), std::min<int>(length, buffer.size()));
    // Without a name for it ICU hands the code back, or its two-letter form.
    const bool isCode = name == code || (name == name.toLower() && threeLetters(name) == code);
    return name.isEmpty() || isCode ? std::nullopt : std::optional(name);
}

}  // namespace velmora::Language
