#include "LumoUI/editor/ResultColumnHandle.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

#include "LumoUI/settings/AppSettings.h"

namespace lumo {

double ResultColumn::clampedWidth(double requested, double available) {
    const double upper =
        available > 0 ? std::min(maximumWidth, std::max(minimumWidth, available - 150)) : maximumWidth;
    return std::min(upper, std::max(minimumWidth, requested));
}

double ResultColumn::textLayoutWidth(double viewWidth, double columnWidth) {
    return std::max(160.0, viewWidth - 50 - columnWidth - 18 - 24);
}

ResultColumnHandle::ResultColumnHandle(AppSettings* settings, QWidget* parent)
    : QWidget(parent), m_settings(settings) {
    setCursor(Qt::SizeHorCursor);
    setAttribute(Qt::WA_Hover);
    setToolTip({});
}

void ResultColumnHandle::requestWidth(double width) {
    if (!m_settings)
        return;
    const double clamped = ResultColumn::clampedWidth(width, m_available);
    if (std::abs(clamped - m_settings->resultColumnWidth()) > 0.5)
        m_settings->setResultColumnWidth(clamped);
}

void ResultColumnHandle::paintEvent(QPaintEvent*) {
    if (!m_hovering && !m_startWidth)
        return;
    // A hairline shows where the column starts while the edge can be grabbed.
    QPainter painter(this);
    QColor line = palette().color(QPalette::Highlight);
    line.setAlphaF(m_startWidth ? 0.9f : 0.5f);
    const qreal x = width() / 2.0;
    painter.setPen(QPen(line, m_startWidth ? 2 : 1));
    painter.drawLine(QPointF(x, 0), QPointF(x, height()));
}

void ResultColumnHandle::enterEvent(QEnterEvent*) {
    m_hovering = true;
    update();
}

void ResultColumnHandle::leaveEvent(QEvent*) {
    m_hovering = false;
    update();
}

void ResultColumnHandle::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !m_settings)
        return QWidget::mousePressEvent(event);
    m_startWidth = m_settings->resultColumnWidth();
    m_startX = event->globalPosition().x();
    update();
}

void ResultColumnHandle::mouseMoveEvent(QMouseEvent* event) {
    if (!m_startWidth)
        return QWidget::mouseMoveEvent(event);
    // The edge is on the column's left: moving it left widens the column.
    requestWidth(*m_startWidth + (m_startX - event->globalPosition().x()));
}

void ResultColumnHandle::mouseReleaseEvent(QMouseEvent* event) {
    if (!m_startWidth)
        return QWidget::mouseReleaseEvent(event);
    requestWidth(*m_startWidth + (m_startX - event->globalPosition().x()));
    m_startWidth.reset();
    update();
}

void ResultColumnHandle::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        requestWidth(ResultColumn::defaultWidth);
}

} // namespace lumo
