#include "Television/Options.h"

#include <QMap>

using namespace Qt::StringLiterals;

namespace velmora::test {

namespace {

using Flavour = TelevisionOptions::Flavour;

QString usualModel(Flavour flavour) {
    switch (flavour) {
        case Flavour::plain:
        case Flavour::password:
            return u"Television,1"_s;
        case Flavour::legacyKeys:
        case Flavour::legacyPin:
            return u"AppleTV3,2"_s;
        case Flavour::transient:
            return u"Television,2"_s;
        case Flavour::paired:
            return u"AppleTV14,1"_s;
    }
    return {};
}

}  // namespace

std::optional<Flavour> TelevisionOptions::readFlavour(const QString& text) {
    static const QMap<QString, Flavour> names{
        {u"plain"_s, Flavour::plain},
        {u"password"_s, Flavour::password},
        {u"legacy-keys"_s, Flavour::legacyKeys},
        {u"legacy-pin"_s, Flavour::legacyPin},
        {u"transient"_s, Flavour::transient},
        {u"paired"_s, Flavour::paired},
    };
    return names.contains(text) ? std::optional(names.value(text)) : std::nullopt;
}

std::optional<TelevisionOptions::Handover> TelevisionOptions::readHandover(const QString& text) {
    if (text == "play"_L1) return Handover::play;
    if (text == "queue"_L1) return Handover::queue;
    return std::nullopt;
}

TelevisionOptions TelevisionOptions::completed() const {
    TelevisionOptions complete = *this;
    if (flavour == Flavour::password && password.isEmpty()) complete.password = u"secret"_s;
    if (model.isEmpty()) complete.model = usualModel(flavour);
    if (systemVersion.isEmpty() && complete.isApples() && isEncrypted())
        complete.systemVersion = handover == Handover::queue ? u"26.6"_s : u"17.4"_s;
    return complete;
}

}  // namespace velmora::test
