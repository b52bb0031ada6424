// A process of its own for each test of the secret store, since a process stays with the session
// bus that it has met first. Reads one call from each line: "find ACCOUNT", "add ACCOUNT VALUE",
// "add-quietly ACCOUNT VALUE" (no dialog), "remove ACCOUNT"; answers each with a line: the status,
// and after "find" the value.

#include "settings/linux/LibSecretBackend.h"

#include <QByteArray>
#include <QByteArrayList>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

using zelvane::SecretStatus;

const char* name(SecretStatus status)
{
    switch (status) {
    case SecretStatus::success:
        return "success";
    case SecretStatus::notFound:
        return "notFound";
    case SecretStatus::refused:
        return "refused";
    case SecretStatus::duplicate:
        return "duplicate";
    case SecretStatus::otherFailure:
        return "otherFailure";
    }
    return "";
}

QByteArray answer(zelvane::SecretBackend& backend, const QByteArrayList& words)
{
    const QString account = QString::fromUtf8(words.value(1));
    if (words.value(0) == "find") {
        const auto found = backend.find(account);
        return QByteArray(name(found.status)) + ' ' + found.value;
    }
    if (words.value(0) == "add") {
        return name(backend.add(account, words.value(2), zelvane::SecretDialog::allowed));
    }
    if (words.value(0) == "add-quietly") {
        return name(backend.add(account, words.value(2), zelvane::SecretDialog::unwanted));
    }
    return name(backend.remove(account));
}

} // namespace

int main(int argc, char** argv)
{
    const int limit = argc > 1 ? QByteArray(argv[1]).toInt() : 2000;
    zelvane::LibSecretBackend backend{std::chrono::milliseconds(limit)};
    for (std::string line; std::getline(std::cin, line);) {
        std::puts(answer(backend, QByteArray::fromStdString(line).split(' ')).constData());
        std::fflush(stdout);
    }
    return 0;
}
