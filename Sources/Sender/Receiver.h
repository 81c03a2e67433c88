#pragma once

#include <QHostAddress>
#include <QString>

namespace velmora {

/// A television, or anything else that takes video over AirPlay.
struct Receiver {
    QString name;        ///< what to call it in front of the user
    QString identifier;  ///< stable across starts; the address and port where nothing better is known
    QHostAddress address;
    quint16 port = 0;
};

}  // namespace velmora
