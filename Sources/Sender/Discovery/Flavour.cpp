#include "Sender/Discovery/Flavour.h"

#include <QCoreApplication>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

/// The texts of this file, for translators.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Televisions)
};

using enum TxtRecord::Feature;

/// From this major version of Apple's system on, `/play` is answered and nothing is played.
constexpr int firstSystemWithoutPlay = 26;
/// The AirPlay stack of that system.
constexpr int firstSourceWithoutPlay = 860;

int majorOf(const QString& version) {
    return version.section(u'.', 0, 0).toInt();
}

bool usesPin(Flavour flavour) {
    return flavour == Flavour::legacyPin || flavour == Flavour::paired;
}

bool isAppleTv(const TxtRecord& record) {
    return record.model.startsWith("AppleTV"_L1);
}

bool isWithoutPlay(const TxtRecord& record) {
    if (!isAppleTv(record)) return false;
    return record.systemVersion.isEmpty() ? majorOf(record.sourceVersion) >= firstSourceWithoutPlay
                                          : majorOf(record.systemVersion) >= firstSystemWithoutPlay;
}

bool speaksEncrypted(const TxtRecord& record) {
    return record.has(encryption) || record.has(easyEncryption);
}

bool insistsOnPin(const TxtRecord& record) {
    return (record.status & (TxtRecord::pinEachTime | TxtRecord::pinOnce)) != 0;
}

bool isRestricted(const TxtRecord& record) {
    return record.accessControl == 1 || record.accessType == 2;
}

/// The flavours in the order to try them, from what is announced; `asksPairing` is the receiver's own word.
QList<Flavour> flavoursFor(const TxtRecord& record, bool hasPairing, bool asksPairing) {
    if (speaksEncrypted(record)) {
        const bool pinOnly =
            isAppleTv(record) || insistsOnPin(record) ||
            (record.has(homePairing) && !record.has(systemPairing) && !record.has(easyEncryption));
        if (hasPairing || pinOnly || asksPairing) return {Flavour::paired};
        return {Flavour::transient, Flavour::paired};
    }
    if (record.has(legacyPairing)) {
        if (hasPairing || insistsOnPin(record)) return {Flavour::legacyPin};
        if (asksPairing) return {Flavour::legacyKeys, Flavour::legacyPin};
        return {Flavour::plain, Flavour::legacyKeys, Flavour::legacyPin};
    }
    if (asksPairing) return {Flavour::legacyPin, Flavour::paired};
    return {Flavour::plain};
}

/// For a receiver of which only the address is known. A plain request is refused at once where it does not
/// fit.
QList<Flavour> flavoursForUnknown(bool hasPairing, bool asksPairing) {
    if (hasPairing) return {Flavour::paired, Flavour::legacyPin, Flavour::plain};
    if (asksPairing) return {Flavour::transient, Flavour::legacyKeys, Flavour::paired, Flavour::legacyPin};
    return {Flavour::plain, Flavour::transient, Flavour::paired};
}

QList<Handover> handoversFor(const std::optional<TxtRecord>& record, Flavour flavour) {
    if (!isEncrypted(flavour)) return {Handover::play, Handover::playText};
    if (!record) return {Handover::playQueue, Handover::play};
    if (isWithoutPlay(*record)) return {Handover::playQueue};
    const bool versionKnown = !record->systemVersion.isEmpty() || !record->sourceVersion.isEmpty();
    const bool queueFirst = isAppleTv(*record) ? !versionKnown
                                               : record->has(videoQueue) || !record->has(video) ||
                                                     majorOf(record->sourceVersion) >= firstSourceWithoutPlay;
    if (queueFirst) return {Handover::playQueue, Handover::play};
    return {Handover::play, Handover::playQueue};
}

/// Starts with what worked, as long as it is still among what the receiver may take.
void preferWorked(QList<Approach>& approaches, const Receiver& receiver,
                  const std::optional<Capability>& worked) {
    if (!worked || (receiver.announced && worked->version != versionOf(receiver))) return;
    const auto place = std::ranges::find(approaches, worked->approach);
    if (place != approaches.end()) std::rotate(approaches.begin(), place, place + 1);
}

}  // namespace

QString versionOf(const Receiver& receiver) {
    if (!receiver.announced) return {};
    return receiver.announced->systemVersion.isEmpty() ? receiver.announced->sourceVersion
                                                       : receiver.announced->systemVersion;
}

void Answers::note(const Approach& approach, Step step, int status) {
    if (status >= 200 && status < 300) return noteKind(approach, step);
    if (status == 401 || status == 403 || status == 470) return noteUnauthorised(approach, step, status);
    if (status == timedOut || status == closed) return noteSilent(approach, step, status);
    if (step == Step::showPin) {
        // 453 comes with the PIN on the screen, 404 from receivers that want the other request line.
        restricted_ = restricted_ || status == 400;
    } else if (status == 409 || status == 453 || status == 503) {
        busy_ = true;
    } else if (step == Step::pairing) {
        refusedFlavours_.append(approach.flavour);
    } else {
        refused_.append(approach);
        // Only these mean that the body was not understood; after the others, text would fare no better.
        if (approach.handover == Handover::play && status != 400 && status != 415 && status != 501)
            refused_.append({approach.flavour, Handover::playText});
    }
}

void Answers::noteKind(const Approach& approach, Step step) {
    if (step == Step::pairing) secretsRefused_ = false;
    if (step == Step::session || step == Step::handover) asksPassword_ = false;
    // A kind answer to /play tells nothing; an item in the queue is there to be played.
    if (step == Step::handover && approach.handover == Handover::playQueue) accepted_ = true;
}

void Answers::noteUnauthorised(const Approach& approach, Step step, int status) {
    if (step == Step::showPin) {
        restricted_ = restricted_ || status == 403;
    } else if (step != Step::pairing && status == 401) {
        asksPassword_ = true;
    } else {
        asksPairing_ = true;
        noteDistrusted(approach.flavour);
    }
}

void Answers::noteSilent(const Approach& approach, Step step, int status) {
    if (step == Step::handover && (status == timedOut || approach.handover == Handover::playQueue)) {
        accepted_ = true;  // it may have been: the answer was lost, not the request
    } else if (status == closed &&
               (step == Step::pairing || (step == Step::handover && !isEncrypted(approach.flavour)))) {
        noteDistrusted(approach.flavour);
    } else if (status == closed && step != Step::showPin) {
        refused_.append(approach);
    }
}

/// With a PIN, the PIN or the stored pairing was wrong: the same once more, with a new PIN.
void Answers::noteDistrusted(Flavour flavour) {
    if (usesPin(flavour)) {
        secretsRefused_ = true;
    } else {
        refusedFlavours_.append(flavour);
    }
}

Course Course::decide(const Receiver& receiver, const Secrets& secrets, const Answers& answers,
                      const std::optional<Capability>& worked) {
    if (answers.accepted_) return {};
    if (const auto takes = receiver.takesVideo(); !takes)
        return {.explanation = Texts::tr("%1 %2.").arg(receiver.name, takes.error())};
    if (answers.busy_)
        return {.explanation = Texts::tr("%1 is busy with something else. Stop that first, then try again.")
                                   .arg(receiver.name)};

    const auto& record = receiver.announced;
    const bool hasPairing = secrets.pairing && !answers.secretsRefused_;
    if (answers.restricted_ || (record && speaksEncrypted(*record) && isRestricted(*record) && !hasPairing))
        return {.explanation =
                    Texts::tr("%1 only lets people of its own home in. In its AirPlay settings, set “Allow "
                              "Access” to “Anyone on the Same Network” or “Everyone”, then try again.")
                        .arg(receiver.name)};

    Course course;
    const QList<Flavour> flavours = record ? flavoursFor(*record, hasPairing, answers.asksPairing_)
                                           : flavoursForUnknown(hasPairing, answers.asksPairing_);
    for (const Flavour flavour : flavours) {
        if (answers.refusedFlavours_.contains(flavour)) continue;
        for (const Handover handover : handoversFor(record, flavour))
            course.approaches.append({flavour, handover});
    }
    preferWorked(course.approaches, receiver, worked);
    course.approaches.removeIf([&](const Approach& approach) { return answers.refused_.contains(approach); });
    course.needsPin =
        !course.approaches.isEmpty() && usesPin(course.approaches.first().flavour) && !hasPairing;
    course.needsPassword = answers.asksPassword_ || (record && record->password && !secrets.password);
    return course;
}

}  // namespace velmora
