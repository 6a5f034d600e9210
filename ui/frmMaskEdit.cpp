#include "ui/frmMaskEdit.h"

#include "app/bug_alert.h"
#include "app/mask_edit_texts.h"
#include "app/modMain.h"
#include "app/settings.h"
#include "app/window_keys.h"
#include "engine/ModFunct.h"
#include "app/controls.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTextEdit>
#include <QWindow>

namespace {

QPointer<frmMaskEdit> openEditor;

const QColor Green(0, 255, 0);
const QColor Red(255, 0, 0);
const QColor Black(0, 0, 0);
const QChar Up = QLatin1Char('+');
const QChar Down = QLatin1Char('-');
const QChar Fixed = QLatin1Char('0');

// The dialog as laid out for a 1024x768 screen (scale 1.0), in pixels.
constexpr int Margin = 8;       // between the frames and around them
constexpr int Inset = 10;       // inside a frame
constexpr int LabelWidth = 48;
constexpr int RowGap = 6;
constexpr int BottomHeight = 50;
constexpr int ButtonWidth = 96;
constexpr int ButtonHeight = 30;
constexpr int DesignWidth = 560;

int scaled(int designPixels) { return qRound(designPixels * screenProfile().ScaleFactor); }

// --- One-line rich-text boxes, positions from 0 --------------------------------

int textLength(const QTextEdit *box) { return box->document()->characterCount() - 1; }

QString text(const QTextEdit *box) { return box->toPlainText(); }

// The characters from start on, cut at the end of the text.
QTextCursor span(QTextEdit *box, int start, int length)
{
    const int end = textLength(box);
    QTextCursor cursor(box->document());
    cursor.setPosition(qMin(start, end));
    cursor.setPosition(qMin(start + length, end), QTextCursor::KeepAnchor);
    return cursor;
}

QColor colourAt(QTextEdit *box, int pos) { return span(box, pos, 1).charFormat().foreground().color(); }

void setColourAt(QTextEdit *box, int pos, const QColor &colour)
{
    QTextCharFormat format;
    format.setForeground(colour);
    span(box, pos, 1).mergeCharFormat(format);
}

// Leaves the caret, and so the view, where it is.
void clearSelection(QTextEdit *box)
{
    QTextCursor cursor = box->textCursor();
    if (!cursor.hasSelection())
        return;
    cursor.clearSelection();
    box->setTextCursor(cursor);
}

// --- The pictures of the three direction buttons ---------------------------------

// A plus (up), a minus (down) or a zero ring (unchanged), in the colour the
// mask gives those characters, drawn for the button's real size.
QIcon directionIcon(QChar direction, int size, qreal pixelRatio)
{
    QPixmap pixmap(QSize(size, size) * pixelRatio);
    pixmap.setDevicePixelRatio(pixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal s = size, bar = s * 0.24, arm = s * 0.40, centre = s / 2;
    const QPen outline(QColor(0, 0, 0, 170), qMax(1.0, s / 20));
    QPainterPath shape;
    if (direction == Fixed) {
        painter.setPen(QPen(Black, s * 0.15));
        painter.drawEllipse(QPointF(centre, centre), s * 0.24, s * 0.34);
        return QIcon(pixmap);
    }
    shape.addRoundedRect(QRectF(centre - arm, centre - bar / 2, 2 * arm, bar), bar / 4, bar / 4);
    if (direction == Up)
        shape.addRoundedRect(QRectF(centre - bar / 2, centre - arm, bar, 2 * arm), bar / 4, bar / 4);
    painter.setPen(outline);
    painter.setBrush(direction == Up ? Green : Red);
    painter.drawPath(shape.simplified());
    return QIcon(pixmap);
}

} // namespace

frmMaskEdit *frmMaskEdit::open(QWidget *opener, std::function<void()> accepted)
{
    if (maskEditTexts().sMaskBaseName.isEmpty())
        return nullptr;
    if (openEditor)
        openEditor->close();
    auto *editor = new frmMaskEdit(opener, std::move(accepted));
    openEditor = editor;
    editor->Form_Load();
    editor->show();
    editor->activateWindow();
    return editor;
}

frmMaskEdit::frmMaskEdit(QWidget *opener, std::function<void()> accepted)
    : QWidget(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_opener(opener), m_accepted(std::move(accepted))
{
    setObjectName(QStringLiteral("frmMaskEdit"));
    setWindowTitle(QStringLiteral("Advanced Mask Edit"));
    setAttribute(Qt::WA_DeleteOnClose);
    createControls();
    connectHandlers();
    if (m_opener) {
        // The editor is no child of the opener, which is disabled while the
        // editor is open; it only stays above it.
        create();
        windowHandle()->setTransientParent(m_opener->window()->windowHandle());
        connect(m_opener, &QObject::destroyed, this, &QWidget::close);
    }
}

void frmMaskEdit::createControls()
{
    framTop = named<QGroupBox>(this, "framTop");
    lblFile = named<QLabel>(framTop, "lblFile", QStringLiteral("File"));
    rtbURL = named<QTextEdit>(framTop, "rtbURL");
    lblMask = named<QLabel>(framTop, "lblMask", QStringLiteral("Mask"));
    rtbMask = named<QTextEdit>(framTop, "rtbMask");
    lblGroup = named<QLabel>(framTop, "lblGroup", QStringLiteral("Group"));
    rtbGroup = named<QTextEdit>(framTop, "rtbGroup");
    framRight = named<QGroupBox>(this, "framRight");
    cmdPlus = named<QPushButton>(framRight, "cmdPlus");
    cmdMinus = named<QPushButton>(framRight, "cmdMinus");
    cmdSame = named<QPushButton>(framRight, "cmdSame");
    framBottom = named<QGroupBox>(this, "framBottom");
    cmdSet = named<QPushButton>(framBottom, "cmdSet", QStringLiteral("SET"));
    cmdClear = named<QPushButton>(framBottom, "cmdClear", QStringLiteral("CLEAR"));
    cmdCancel = named<QPushButton>(framBottom, "cmdCancel", QStringLiteral("CANCEL"));

    for (QTextEdit *box : {rtbURL, rtbMask, rtbGroup}) {
        box->setReadOnly(true);
        box->setAcceptRichText(false);
        box->setUndoRedoEnabled(false);
        box->setLineWrapMode(QTextEdit::NoWrap);
        box->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        box->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        box->setTabChangesFocus(true);
        box->document()->setDocumentMargin(2);
        // Column k of the three boxes stays one column when a long name scrolls.
        for (QTextEdit *other : {rtbURL, rtbMask, rtbGroup}) {
            if (other != box)
                connect(box->horizontalScrollBar(), &QScrollBar::valueChanged, other->horizontalScrollBar(),
                        &QScrollBar::setValue);
        }
    }
    rtbURL->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    for (QTextEdit *box : {rtbMask, rtbGroup}) {
        box->setTextInteractionFlags(Qt::NoTextInteraction);
        box->setFocusPolicy(Qt::NoFocus);
    }
}

void frmMaskEdit::connectHandlers()
{
    connect(cmdPlus, &QPushButton::clicked, this, [this] { ApplyDirection(Up, Green); });
    connect(cmdMinus, &QPushButton::clicked, this, [this] { ApplyDirection(Down, Red); });
    connect(cmdSame, &QPushButton::clicked, this, [this] { ApplyDirection(Fixed, Black); });
    connect(cmdClear, &QPushButton::clicked, this, &frmMaskEdit::cmdClear_Click);
    connect(cmdSet, &QPushButton::clicked, this, &frmMaskEdit::cmdSet_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &QWidget::close);
    pressOnKeys(this, cmdSet);
}

void frmMaskEdit::Form_Load()
{
    if (m_opener)
        m_opener->setEnabled(false);
    const MaskEditTexts &texts = maskEditTexts();
    QString directions = texts.sMaskDirections;
    if (!directions.isEmpty())
        directions = sMaskToDirections(directions); // a "1" shows as the "+" it stands for
    QString groups = texts.sMaskGroups;
    if (groups.isEmpty() || !bIsValidMask(texts.sMaskBaseName, directions, groups))
        groups = sMaskToGroups(directions);
    setFonts();
    rtbURL->setPlainText(texts.sMaskBaseName);
    rtbMask->setPlainText(directions);
    rtbGroup->setPlainText(groups);
    if (directions.size() != texts.sMaskBaseName.size()) {
        // A mask of another length cannot be painted over this name.
        restoreDefaultMask();
    } else {
        ColourMask();
        CopyColours();
    }
    if (settings().ToolTips.boolGet()) {
        rtbURL->setToolTip(QStringLiteral("Select Characters To Mask"));
        cmdPlus->setToolTip(QStringLiteral("Set These Characters To Increase"));
        cmdMinus->setToolTip(QStringLiteral("Set These Characters To Decrease"));
        cmdSame->setToolTip(QStringLiteral("Set These Characters To Remain Unchanged"));
        cmdSet->setToolTip(QStringLiteral("Accept This Mask"));
        cmdClear->setToolTip(QStringLiteral("Clear Current Mask"));
        cmdCancel->setToolTip(QStringLiteral("Quit Without Changes"));
    } else {
        ClearToolTips(this);
    }
    sizeToName();
}

// Labels and buttons take the dialog size, the boxes the text size and two
// points more, in a fixed-pitch font.
void frmMaskEdit::setFonts()
{
    const ScreenProfile &profile = screenProfile();
    SetFormFontSize(this, profile.FontSizeSmall);
    QFont fixedPitch(QStringLiteral("Courier New"));
    fixedPitch.setStyleHint(QFont::TypeWriter);
    fixedPitch.setFixedPitch(true);
    fixedPitch.setPointSize(profile.FontSizeMedium + 2);
    fixedPitch.setBold(true); // the bright green of a rising counter reads better bold
    for (QTextEdit *box : {rtbURL, rtbMask, rtbGroup})
        box->setFont(fixedPitch);
    const int frame = 2 * (rtbURL->frameWidth() + qRound(rtbURL->document()->documentMargin()));
    m_rowHeight = qMax(scaled(26), QFontMetrics(fixedPitch).height() + frame + 2);
}

// Wide enough for the whole name when the screen allows, centred on the opener.
void frmMaskEdit::sizeToName()
{
    const int nameWidth = QFontMetrics(rtbURL->font()).horizontalAdvance(text(rtbURL) + QLatin1Char(' '))
        + 2 * (rtbURL->frameWidth() + 2);
    const int rightWidth = 2 * scaled(Inset) + 2 * m_rowHeight;
    const int chrome = 4 * scaled(Margin) + 2 * scaled(Inset) + scaled(LabelWidth) + rightWidth;
    const int height = 3 * scaled(Margin) + 2 * scaled(Inset) + 3 * m_rowHeight + 2 * scaled(RowGap)
        + scaled(BottomHeight);
    QRect available(0, 0, 1024, 768);
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        available = screen->availableGeometry();
    setMinimumSize(qMin(scaled(DesignWidth), available.width()), height);
    resize(qBound(scaled(DesignWidth), chrome + nameWidth, available.width() * 9 / 10), height);
    const QRect around = m_opener ? m_opener->window()->frameGeometry() : available;
    move(around.center() - rect().center());
}

// The top frame across the top, the right frame at the right, the bottom frame
// along the bottom; the boxes share one left edge so that their columns agree.
void frmMaskEdit::layOutFrames()
{
    const int margin = scaled(Margin), inset = scaled(Inset), gap = scaled(RowGap);
    const int buttonSide = m_rowHeight;
    const int rightWidth = 2 * inset + 2 * buttonSide;
    const int bottomHeight = scaled(BottomHeight);
    const int topHeight = qMax(0, height() - bottomHeight - 3 * margin);
    framBottom->setGeometry(margin, height() - bottomHeight - margin, width() - 2 * margin, bottomHeight);
    framRight->setGeometry(width() - margin - rightWidth, margin, rightWidth, topHeight);
    framTop->setGeometry(margin, margin, qMax(0, framRight->x() - 2 * margin), topHeight);

    const int boxLeft = inset + scaled(LabelWidth);
    const int boxWidth = qMax(0, framTop->width() - boxLeft - inset);
    const struct {
        QLabel *label;
        QTextEdit *box;
        QPushButton *button;
        QChar direction;
    } rows[] = {{lblFile, rtbURL, cmdPlus, Up}, {lblMask, rtbMask, cmdMinus, Down}, {lblGroup, rtbGroup, cmdSame, Fixed}};
    const qreal pixelRatio = devicePixelRatioF();
    for (int i = 0; i < 3; ++i) {
        const int top = inset + i * (m_rowHeight + gap);
        rows[i].label->setGeometry(inset, top, scaled(LabelWidth), m_rowHeight);
        rows[i].box->setGeometry(boxLeft, top, boxWidth, m_rowHeight);
        rows[i].button->setGeometry(inset, top, 2 * buttonSide, buttonSide);
        const int iconSide = buttonSide - scaled(6);
        rows[i].button->setIconSize(QSize(iconSide, iconSide));
        rows[i].button->setIcon(directionIcon(rows[i].direction, iconSide, pixelRatio));
    }
    const int buttonWidth = scaled(ButtonWidth), buttonHeight = scaled(ButtonHeight);
    const int spacing = scaled(24);
    int left = (framBottom->width() - 3 * buttonWidth - 2 * spacing) / 2;
    for (QPushButton *button : {cmdSet, cmdClear, cmdCancel}) {
        button->setGeometry(left, (bottomHeight - buttonHeight) / 2, buttonWidth, buttonHeight);
        left += buttonWidth + spacing;
    }
}

// The selected characters of the name take the direction in its colour in
// the mask, and form one group.
void frmMaskEdit::ApplyDirection(QChar direction, const QColor &colour)
{
    const int scrolled = rtbURL->horizontalScrollBar()->value();
    const QTextCursor selection = rtbURL->textCursor();
    const int length = textLength(rtbURL);
    const int start = selection.selectionStart();
    int count = selection.selectionEnd() - start;
    if (start + count > length)
        count = length - start;
    if (count > 0) {
        QTextCharFormat format;
        format.setForeground(colour);
        span(rtbMask, start, count).insertText(QString(count, direction), format);
    }
    rtbGroup->setPlainText(RegroupSelection(text(rtbGroup), start + 1, count));
    caretToStart(scrolled);
    CopyColours();
}

void frmMaskEdit::ColourMask()
{
    const QString mask = text(rtbMask);
    for (int pos = int(mask.size()) - 1; pos >= 0; --pos) {
        const QChar c = mask.at(pos);
        if (c == Up)
            setColourAt(rtbMask, pos, Green);
        else if (c == Down)
            setColourAt(rtbMask, pos, Red);
        else if (c == Fixed)
            setColourAt(rtbMask, pos, Black);
    }
    clearSelection(rtbMask);
}

void frmMaskEdit::CopyColours()
{
    for (int pos = textLength(rtbMask) - 1; pos >= 0; --pos) {
        const QColor colour = colourAt(rtbMask, pos);
        for (QTextEdit *box : {rtbURL, rtbGroup}) {
            if (pos < textLength(box))
                setColourAt(box, pos, colour);
        }
    }
    for (QTextEdit *box : {rtbURL, rtbMask, rtbGroup})
        clearSelection(box);
}

// The caret goes back to the start of the name; the view goes back to where
// the user was, on all three boxes alike.
void frmMaskEdit::caretToStart(int scrolled)
{
    QTextCursor cursor = rtbURL->textCursor();
    cursor.setPosition(0);
    rtbURL->setTextCursor(cursor);
    for (QTextEdit *box : {rtbURL, rtbMask, rtbGroup})
        box->horizontalScrollBar()->setValue(scrolled);
}

// The mask derived from the name, as a new address would get it.
void frmMaskEdit::restoreDefaultMask()
{
    const int scrolled = rtbURL->horizontalScrollBar()->value();
    rtbMask->setPlainText(sMaskToDirections(sDeriveMasks(text(rtbURL), true)));
    rtbGroup->setPlainText(sMaskToGroups(text(rtbMask)));
    caretToStart(scrolled);
    ColourMask();
    CopyColours();
}

void frmMaskEdit::cmdClear_Click()
{
    rtbURL->selectAll();
    ApplyDirection(Fixed, Black);
}

void frmMaskEdit::cmdSet_Click()
{
    try {
        MaskEditTexts &texts = maskEditTexts();
        if (!bIsValidMask(texts.sMaskBaseName, text(rtbMask), text(rtbGroup))) {
            restoreDefaultMask();
            return;
        }
        texts.sMaskDirections = text(rtbMask);
        texts.sMaskGroups = text(rtbGroup);
        if (m_opener) {
            m_opener->setEnabled(true);
            if (m_accepted)
                m_accepted();
        }
        close();
    } catch (const Fault &f) {
        BugAlert(QStringLiteral("frmMaskEdit.cmdSet_Click"), QString(), f);
    }
}

void frmMaskEdit::closeEvent(QCloseEvent *event)
{
    if (m_opener)
        m_opener->setEnabled(true);
    event->accept();
}

void frmMaskEdit::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layOutFrames();
}

void frmMaskEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}
