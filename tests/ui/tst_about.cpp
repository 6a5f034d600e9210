#include "support/fakes.h"
#include "support/test_main.h"
#include "support/window_fixture.h"
#include "ui/frmAbout.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>

class AboutTest : public QObject {
    Q_OBJECT
private slots:
    void openAndClose_data();
    void openAndClose();
};

namespace {

// Right-clicks target and chooses "About Tolmara" in the menu that comes up;
// false when none came up.
bool chooseAboutFromMenu(QWidget *target)
{
    bool shown = false;
    QTimer::singleShot(100, target, [&shown] {
        if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
            shown = true;
            for (QAction *action : menu->actions())
                if (action->text() == QLatin1String("About Tolmara"))
                    menu->setActiveAction(action);
            QTest::keyClick(menu, Qt::Key_Return);
        }
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), target->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(target, &event);
    QTest::qWait(200);
    return shown;
}

} // namespace

// How the box is opened and how it is closed.
void AboutTest::openAndClose_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::addColumn<QString>("close");
    QTest::newRow("F1, a letter") << false << "key";
    QTest::newRow("menu of a button, click on the text") << true << "click text";
    QTest::newRow("F1, click on the box") << false << "click box";
}

void AboutTest::openAndClose()
{
    QFETCH(bool, byMenu);
    QFETCH(QString, close);
    fakes::TestSeams seams;
    QPointer<frmMain> w = fixture::openMainWindow(seams);
    // The right button on the picture is a picture command: no menu comes up there.
    QVERIFY(!chooseAboutFromMenu(w->pictMain));
    if (byMenu)
        QVERIFY(chooseAboutFromMenu(w->cmdConfig));
    else
        QTest::keyClick(w, Qt::Key_F1);
    QPointer<frmAbout> about = w->findChild<frmAbout *>();
    QVERIFY(about && about->isVisible());
    QVERIFY(about->lblTitle->text().startsWith(QLatin1String("Tolmara 2.")));
    if (close == QLatin1String("key"))
        QTest::keyClick(about, Qt::Key_A);
    else
        QTest::mouseClick(close == QLatin1String("click box") ? static_cast<QWidget *>(about) : about->lblCredits,
                          Qt::LeftButton);
    QTRY_VERIFY(about.isNull());
    w->Unload();
}

TOLMARA_REGISTER_TEST(AboutTest)
#include "tst_about.moc"
