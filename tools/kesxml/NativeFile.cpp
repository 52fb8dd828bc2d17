#include "NativeFile.h"

#include <kesplatform/CorvinaException.h>

#include <QByteArrayView>
#include <QStringView>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::chrono::seconds c_patience{5};
constexpr std::chrono::milliseconds c_pause{20};

/// As much as a document from a pipe may hold.
constexpr qsizetype c_maxBytes = 0x3FFFFFFF;

constexpr char16_t c_escapedByte = 0xDC00;

bool IsEscapedByte(QChar unit)
{
    return unit.unicode() >= c_escapedByte + 0x80 && unit.unicode() <= c_escapedByte + 0xFF;
}

[[noreturn]] void Fail(const QString& name, const QString& reason)
{
    throw CorvinaException(TString(name + ": " + reason));
}

class Descriptor
{
public:
    Descriptor(const QString& name, int flags)
        : m_descriptor(open(ToNativeName(name).constData(), flags | O_CLOEXEC))
    {
        if (m_descriptor < 0)
            Fail(name, std::strerror(errno));
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(m_descriptor); }

    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Waits for the next bytes of a pipe, or for the first who writes to it. False when nobody came.
bool WaitForPipe(int descriptor, bool hasWriter, std::chrono::steady_clock::time_point patienceEnds)
{
    if (hasWriter) {
        pollfd waiting{descriptor, POLLIN, 0};
        poll(&waiting, 1, -1);
        return true;
    }
    std::this_thread::sleep_for(c_pause);
    return std::chrono::steady_clock::now() < patienceEnds;
}

} // namespace

QString FromNativeName(const char* name)
{
    QByteArrayView bytes(name);
    QString text;
    while (!bytes.isEmpty()) {
        // A character at a time, of as many bytes as its first one says.
        const auto lead = static_cast<unsigned char>(bytes.front());
        const qsizetype length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        const QByteArrayView character = bytes.first(qMin(length, bytes.size()));
        if (character.isValidUtf8()) {
            text += QString::fromUtf8(character);
            bytes = bytes.sliced(character.size());
        } else {
            text += QChar(static_cast<char16_t>(c_escapedByte + lead));
            bytes = bytes.sliced(1);
        }
    }
    return text;
}

QByteArray ToNativeName(const QString& name)
{
    QByteArray bytes;
    qsizetype start = 0;
    for (qsizetype i = 0; i < name.size(); ++i) {
        const bool isPair = i > 0 && name.at(i - 1).isHighSurrogate();
        if (!IsEscapedByte(name.at(i)) || isPair)
            continue;
        bytes += QStringView(name).sliced(start, i - start).toUtf8();
        bytes += static_cast<char>(name.at(i).unicode() - c_escapedByte);
        start = i + 1;
    }
    return bytes + QStringView(name).sliced(start).toUtf8();
}

bool IsUtf8Name(const QString& name)
{
    return ToNativeName(name) == name.toUtf8();
}

bool IsPipe(const QString& name)
{
    struct stat status;
    return stat(ToNativeName(name).constData(), &status) == 0 && S_ISFIFO(status.st_mode);
}

QByteArray ReadNativeFile(const QString& name)
{
    // Opened in any other way, a pipe waits for ever for somebody to write.
    const Descriptor file(name, O_RDONLY | O_NONBLOCK);
    const auto patienceEnds = std::chrono::steady_clock::now() + c_patience;
    const bool isPipe = IsPipe(name);
    const auto part = std::make_unique<std::array<char, 65536>>();
    QByteArray bytes;
    for (;;) {
        const ssize_t count = read(file.Get(), part->data(), part->size());
        if (count > 0) {
            if (bytes.size() > c_maxBytes - count)
                Fail(name, "it holds more than fits into memory");
            bytes.append(part->data(), count);
        } else if (count < 0 && errno == EINTR) {
            continue;
        } else if (count < 0 && errno != EAGAIN) {
            Fail(name, std::strerror(errno));
        } else if (count == 0 && (!isPipe || !bytes.isEmpty())) {
            return bytes;
        } else if (!WaitForPipe(file.Get(), count < 0, patienceEnds)) {
            Fail(name, "nobody writes to this pipe");
        }
    }
}
