#include "Platform/Foundation/StandardError.h"

#include "Platform/Foundation/UniqueDescriptor.h"

#include <QString>
#include <QtGlobal>

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velloren {

namespace {

void writeQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    writeToStandardError(qFormatLogMessage(type, context, message).toStdString() + "\n");
}

} // namespace

void openMissingStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0)
            (void)!::open("/dev/null", O_RDWR); // takes the lowest number that is free: this one
    }
}

void neverWaitForStandardError() {
    qInstallMessageHandler(&writeQtMessage);

    struct stat status {};

    if (::fstat(STDERR_FILENO, &status) != 0 || !(S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)))
        return; // a file makes nobody wait, and a socket cannot be opened
    // Whoever else has the pipe or the terminal may rely on waiting: only what is opened here does not.
    const UniqueDescriptor own(::open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (own)
        ::dup2(own.get(), STDERR_FILENO);
}

void writeToStandardError(std::string_view text) {
    const char* bytes = text.data();
    ssize_t written = ::send(STDERR_FILENO, bytes, text.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (written < 0 && errno == ENOTSOCK)
        written = ::write(STDERR_FILENO, bytes, text.size());
    (void)written; // there is nowhere else to say it
}

} // namespace velloren
