#include "support/fakes.h"

#include "app/main_window_link.h"
#include "app/mask_edit_texts.h"
#include "app/modMain.h"
#include "app/settings.h"
#include "app/temp_pictures.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

namespace fakes {

platform::Answer MessageBoxes::show(const platform::MessageBoxRequest &request)
{
    m_shown.append(request);
    if (m_hook)
        m_hook(request);
    if (!m_script.isEmpty())
        return m_script.takeFirst();
    if (m_answerAll)
        return *m_answerAll;
    const QString unexpected = QStringLiteral("unexpected box \"%1\": %2").arg(request.title, request.text);
    QTest::qFail(qPrintable(unexpected), __FILE__, __LINE__);
    return platform::Answer::Cancel;
}

QStringList MessageBoxes::texts() const
{
    QStringList all;
    for (const platform::MessageBoxRequest &r : m_shown)
        all.append(r.text);
    return all;
}

std::optional<QSslConfiguration> Network::tlsConfiguration()
{
    if (authorities.isEmpty())
        return std::nullopt;
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setCaCertificates(QSslConfiguration::systemCaCertificates() + authorities);
    return tls;
}

QString TestSeams::scratchTemplate()
{
    const QString memory = QStringLiteral("/dev/shm");
    const QString parent = QFileInfo(memory).isWritable() ? memory : QDir::tempPath();
    return QDir::cleanPath(parent + QStringLiteral("/tolmara-XXXXXX"));
}

// Puts the fakes in or the real seams back; either way the program state is fresh.
void TestSeams::install(bool on)
{
    QDir(folder.path()).mkdir(QStringLiteral("program"));
    program.path = QDir::toNativeSeparators(programDir());
    const auto put = [on](auto *...fakes) { (platform::install(on ? fakes : nullptr), ...); };
    put(&boxes, store.get(), &clipboard, &beeper, &screen, &dialUp, &clock, &network, &program);
    resetSettings();
    resetStartup();
    resetMaskEditTexts();
    ReleaseTempPictures(); // locks held in one test's folder end with it
    installMainWindowLink(nullptr);
}

QString TestSeams::settingsFile() const { return store->fileName(store::Application); }

QString TestSeams::stored(const QString &key) const
{
    return store->read(store::Application, store::Section, key, QStringLiteral("<missing>"));
}

} // namespace fakes
