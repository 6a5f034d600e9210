#pragma once
// The thin seams over what the desktop provides. The program installs the Qt
// implementations at start-up; tests install fakes (tests/support) instead.

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QSize>
#include <QSslConfiguration>
#include <QString>

#include <optional>

namespace platform {

// Message boxes -------------------------------------------------------------

enum class Icon { None, Critical, Question, Exclamation, Information };
enum class Buttons { Ok, OkCancel, AbortRetryIgnore, YesNoCancel, YesNo, RetryCancel };
// The button a box was closed with.
enum class Answer { Ok = 1, Cancel = 2, Abort = 3, Retry = 4, Ignore = 5, Yes = 6, No = 7 };

struct MessageBoxRequest {
    QString text;
    QString title;
    Icon icon = Icon::None;
    Buttons buttons = Buttons::Ok;
    bool foreground = false; // brought to the foreground over other programs
};

class MessageBoxes {
public:
    virtual ~MessageBoxes() = default;
    virtual Answer show(const MessageBoxRequest &request) = 0;
};

// Per-user settings store: text values by application, section and key.
class SettingsStore {
public:
    virtual ~SettingsStore() = default;
    virtual QString read(const QString &application, const QString &section, const QString &key,
                         const QString &defaultValue) = 0;
    // The value is on disk when write returns, unless a batch is open.
    virtual void write(const QString &application, const QString &section, const QString &key,
                       const QString &value) = 0;
    // Writes between these two reach the disk together when the outermost batch ends.
    virtual void beginBatch() {}
    virtual void endBatch() {}
    // Keeps other copies of the program out of their start-up until released
    // (their hold waits a while, then goes on without); false when it could not wait.
    virtual bool holdStartUp(const QString &) { return true; }
    virtual void releaseStartUp() {}
};

class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual QString text() const = 0;
    virtual void setText(const QString &text) = 0;
};

class Beeper {
public:
    virtual ~Beeper() = default;
    virtual void beep() = 0;
};

class Screen {
public:
    virtual ~Screen() = default;
    virtual QSize sizeInPixels() const = 0;
};

// One active dial-up connection as the dial-up service lists it.
struct DialUpConnection {
    quintptr handle = 0;
    QByteArray entryName; // the fixed-size entry name field, 257 bytes, zero-padded
};

class DialUp {
public:
    virtual ~DialUp() = default;
    // Lists the active connections; returns the service's result code (0 = success).
    virtual qint32 enumConnections(QList<DialUpConnection> &connections) = 0;
    virtual qint32 hangUp(quintptr handle) = 0;
};

class Clock {
public:
    virtual ~Clock() = default;
    virtual QDateTime now() const = 0;
};

// A reply's body may grow to this many bytes; beyond, the transfer fails, so
// that an endless body cannot take all the memory.
inline constexpr qint64 MaxBodyBytes = qint64(1) << 30;

// What the transfer control takes from the system around it: whether TLS
// works at all, the TLS configuration (the certificate authorities trusted)
// and how large a body a reply may have.
class Network {
public:
    virtual ~Network() = default;
    virtual bool tlsAvailable() = 0;
    // Empty: Qt's default (so a plain http run never loads the TLS library).
    virtual std::optional<QSslConfiguration> tlsConfiguration() = 0;
    virtual qint64 maxBody() = 0;
};

// Where the program itself lies: the directory of its executable, in native
// separators and without a trailing separator.
class ProgramLocation {
public:
    virtual ~ProgramLocation() = default;
    virtual QString dir() const = 0;
};

// The installed seams. Each accessor returns the installed object; installing
// nullptr puts the Qt implementation back.
MessageBoxes &messageBoxes();
SettingsStore &settingsStore();
Clipboard &clipboard();
Beeper &beeper();
Screen &screen();
DialUp &dialUp();
Clock &clock();
Network &network();
ProgramLocation &programLocation();

void install(MessageBoxes *seam);
void install(SettingsStore *seam);
void install(Clipboard *seam);
void install(Beeper *seam);
void install(Screen *seam);
void install(DialUp *seam);
void install(Clock *seam);
void install(Network *seam);
void install(ProgramLocation *seam);

// False in a session without a display server to show windows on (Windows
// always has its desktop).
bool displayAvailable();

// Shorthand for the common case of a box without the foreground flag.
Answer msgBox(const QString &text, const QString &title, Icon icon = Icon::None,
              Buttons buttons = Buttons::Ok);

} // namespace platform
