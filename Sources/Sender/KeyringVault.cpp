#include "Sender/KeyringVault.h"

#include "Diagnostics/Log.h"

#include <qt6keychain/keychain.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

const QString service = u"Velmora"_s;

SecretVault::Answer answerOf(const QKeychain::Job& job) {
    if (job.error() == QKeychain::NoError) return SecretVault::Answer::done;
    if (job.error() == QKeychain::EntryNotFound) return SecretVault::Answer::absent;
    logger().notice(u"keyring: "_s + job.errorString());
    return SecretVault::Answer::unavailable;
}

/// The job deletes itself when it is through.
template <typename Job>
Job* jobFor(const QString& name) {
    auto* job = new Job(service);
    job->setKey(name);
    job->setInsecureFallback(false);
    return job;
}

}  // namespace

void KeyringVault::read(const QString& name, Read read) {
    auto* job = jobFor<QKeychain::ReadPasswordJob>(name);
    QObject::connect(job, &QKeychain::Job::finished, job,
                     [job, read] { read(answerOf(*job), job->binaryData()); });
    job->start();
}

void KeyringVault::write(const QString& name, const QByteArray& secret, Done done) {
    auto* job = jobFor<QKeychain::WritePasswordJob>(name);
    job->setBinaryData(secret);
    QObject::connect(job, &QKeychain::Job::finished, job, [job, done] { done(answerOf(*job)); });
    job->start();
}

void KeyringVault::remove(const QString& name, Done done) {
    auto* job = jobFor<QKeychain::DeletePasswordJob>(name);
    QObject::connect(job, &QKeychain::Job::finished, job, [job, done] { done(answerOf(*job)); });
    job->start();
}

}  // namespace velmora
