#include "view/titled_frame.h"

#include <QStyleOptionGroupBox>
#include <QStylePainter>

TitledFrame::TitledFrame(const QString &title, QWidget *parent) : QGroupBox(title, parent), m_title(title)
{
    setAccessibleName(title);
}

void TitledFrame::setTitle(const QString &title)
{
    if (title == m_title)
        return;
    const QRect before = titleBand();
    m_title = title;
    setAccessibleName(title);
    update(before | titleBand());
}

// The group box's own drawing options, with this title.
QStyleOptionGroupBox TitledFrame::styleOption() const
{
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    option.text = m_title;
    if (m_title.isEmpty())
        option.subControls &= ~QStyle::SC_GroupBoxLabel;
    return option;
}

void TitledFrame::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    painter.drawComplexControl(QStyle::CC_GroupBox, styleOption());
}

// The full width of the frame down to the title's foot: the title and the
// frame's top line, which the style breaks around the title.
QRect TitledFrame::titleBand() const
{
    const QStyleOptionGroupBox option = styleOption();
    const QRect label = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, this);
    return QRect(0, 0, width(), label.bottom() + 2);
}
