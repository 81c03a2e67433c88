// Serves one file on loopback until it is ended, for the benchmark of the media server.
#include "Sender/MediaServer.h"

#include <QCoreApplication>
#include <QTextStream>

using velmora::MediaServer;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QTextStream errors(stderr);
    if (arguments.size() != 2) {
        errors << "usage: benchmark-serve-file FILE\n";
        return 2;
    }
    const auto server = MediaServer::start();
    if (!server) {
        errors << server.error() << '\n';
        return 1;
    }
    const QHostAddress loopback(QHostAddress::LocalHost);
    const auto publication = (*server)->publish(arguments.at(1), loopback);
    if (!publication) {
        errors << publication.error() << '\n';
        return 1;
    }
    QTextStream(stdout) << (*publication)->url(loopback).toString() << Qt::endl;
    return QCoreApplication::exec();
}
