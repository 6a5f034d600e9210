#pragma once
// Fakes for the desktop seams. A TestSeams object installs all of them for
// the length of one test and puts the real ones back when it goes.

#include "platform/qt_seams.h"
#include "platform/seams.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <optional>

namespace fakes {

// Records every box and answers from a script. A box that the test did not
// script fails the test with its text (it is answered Cancel, so that the code
// under test goes on and never blocks).
class MessageBoxes : public platform::MessageBoxes {
public:
    platform::Answer show(const platform::MessageBoxRequest &request) override;

    // The next box is answered with this.
    void expect(platform::Answer answer) { m_script.append(answer); }
    // Every box, also unscripted ones, is answered with this from now on.
    void answerAll(platform::Answer answer) { m_answerAll = answer; }
    // Runs when a box is shown, before it is answered (for re-entrant checks).
    void onShow(std::function<void(const platform::MessageBoxRequest &)> hook) { m_hook = std::move(hook); }

    const QList<platform::MessageBoxRequest> &shown() const { return m_shown; }
    QStringList texts() const;
    void clear() { m_shown.clear(); }

private:
    QList<platform::MessageBoxRequest> m_shown;
    QList<platform::Answer> m_script;
    std::optional<platform::Answer> m_answerAll;
    std::function<void(const platform::MessageBoxRequest &)> m_hook;
};

struct Clipboard : platform::Clipboard {
    QString text() const override { return content; }
    void setText(const QString &text) override { content = text; }
    QString content;
};

struct Beeper : platform::Beeper {
    void beep() override { ++beeps; }
    int beeps = 0;
};

struct Screen : platform::Screen {
    QSize sizeInPixels() const override { return size; }
    QSize size{1024, 768};
};

class DialUp : public platform::DialUp {
public:
    qint32 enumConnections(QList<platform::DialUpConnection> &connections) override
    {
        connections = active;
        return enumResult;
    }
    qint32 hangUp(quintptr handle) override
    {
        hungUp.append(handle);
        return hangUpResult;
    }
    // A connection whose entry name field holds name, zero-padded to 257 bytes.
    static platform::DialUpConnection connection(quintptr handle, const QByteArray &name)
    {
        return {handle, name.leftJustified(257, '\0', true)};
    }

    QList<platform::DialUpConnection> active;
    QList<quintptr> hungUp;
    qint32 enumResult = 0;
    qint32 hangUpResult = 0;
};

struct Clock : platform::Clock {
    QDateTime now() const override { return time; }
    QDateTime time{QDate(2026, 3, 7), QTime(9, 5, 4)};
};

// TLS on or off, the test's own authority trusted besides the system's roots
// (loading those roots is slow: only when an authority is given), a body cap.
struct Network : platform::Network {
    bool tlsAvailable() override { return tls; }
    std::optional<QSslConfiguration> tlsConfiguration() override;
    qint64 maxBody() override { return bodyCap; }
    bool tls = true;
    QList<QSslCertificate> authorities;
    qint64 bodyCap = platform::MaxBodyBytes;
};

struct ProgramLocation : platform::ProgramLocation {
    QString dir() const override { return path; }
    QString path;
};

// Installs every fake, a settings store in a temporary folder, fresh program
// state, and a program directory in a temporary folder.
class TestSeams {
public:
    TestSeams() { install(true); }
    ~TestSeams() { install(false); }

    MessageBoxes boxes;
    Clipboard clipboard;
    Beeper beeper;
    Screen screen;
    DialUp dialUp;
    Clock clock;
    Network network;
    ProgramLocation program; // the program's directory: at first the "program" folder below
    // settings file and program directory live here
    QTemporaryDir folder{scratchTemplate()};
    std::unique_ptr<platform::QtSettingsStore> store{new platform::QtSettingsStore(folder.path())};

    // An existing folder inside `folder`.
    QString programDir() const { return folder.filePath(QStringLiteral("program")); }
    QString settingsFile() const;    // the INI file the store writes
    // Reads a key of the program's section straight from the store.
    QString stored(const QString &key) const;

private:
    static QString scratchTemplate(); // in memory where the system offers it: the store syncs every write
    void install(bool on);
};

} // namespace fakes
