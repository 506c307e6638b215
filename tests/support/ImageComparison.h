#pragma once

// Compares a rendered image with a reference PNG kept beside the tests, allowing for the small
// differences of anti-aliasing and font hinting between machines.
//
//   expectLooksLike(renderPlotImage(description, size, style), "LumoUI/plot/references/curve.png");
//
// With LUMO_UPDATE_REFERENCES=1 in the environment the reference is written instead (look at
// it before committing it). A failing comparison leaves the rendered image and a map of the
// differing pixels in "failed-images".

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QString>

#include <algorithm>
#include <cstdlib>

namespace lumo::test {

struct ImageDifference {
    /// Share of the pixels whose colour differs by more than the tolerance in some channel.
    double differingShare = 0;
    /// A picture of where they differ (red on white), for a failure's report.
    QImage map;
};

/// Pixels count as different when a channel differs by more than `channelTolerance` (0…255).
inline ImageDifference compareImages(const QImage& actual, const QImage& expected, int channelTolerance) {
    ImageDifference difference;
    const QImage a = actual.convertToFormat(QImage::Format_ARGB32);
    const QImage b = expected.convertToFormat(QImage::Format_ARGB32);
    if (a.size() != b.size()) {
        difference.differingShare = 1;
        return difference;
    }
    difference.map = QImage(a.size(), QImage::Format_RGB32);
    difference.map.fill(Qt::white);
    qint64 differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        const auto* left = reinterpret_cast<const QRgb*>(a.constScanLine(y));
        const auto* right = reinterpret_cast<const QRgb*>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            const int channel = std::max(
                {std::abs(qRed(left[x]) - qRed(right[x])), std::abs(qGreen(left[x]) - qGreen(right[x])),
                 std::abs(qBlue(left[x]) - qBlue(right[x])), std::abs(qAlpha(left[x]) - qAlpha(right[x]))});
            if (channel > channelTolerance) {
                ++differing;
                difference.map.setPixel(x, y, qRgb(220, 0, 0));
            }
        }
    }
    difference.differingShare =
        double(differing) / double(std::max<qint64>(1, qint64(a.width()) * a.height()));
    return difference;
}

/// Expects `actual` to look like the reference at `relativePath` under the test data folder:
/// at most `maxShare` of its pixels may differ by more than `channelTolerance`.
inline void expectLooksLike(const QImage& actual, const QString& relativePath, double maxShare = 0.01,
                            int channelTolerance = 64) {
    const QString path = QStringLiteral(LUMO_TEST_DATA_DIR "/") + relativePath;
    if (qEnvironmentVariableIntValue("LUMO_UPDATE_REFERENCES") == 1) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        ASSERT_TRUE(actual.save(path, "PNG")) << path.toStdString();
        return;
    }
    const QImage expected(path);
    ASSERT_FALSE(expected.isNull()) << "no reference image at " << path.toStdString();
    const ImageDifference difference = compareImages(actual, expected, channelTolerance);
    EXPECT_EQ(actual.size(), expected.size()) << relativePath.toStdString();
    EXPECT_LE(difference.differingShare, maxShare) << relativePath.toStdString();
    if (difference.differingShare > maxShare) {
        QDir().mkpath(QStringLiteral("failed-images"));
        const QString name = QFileInfo(path).completeBaseName();
        actual.save(QStringLiteral("failed-images/%1.actual.png").arg(name));
        if (!difference.map.isNull())
            difference.map.save(QStringLiteral("failed-images/%1.difference.png").arg(name));
    }
}

} // namespace lumo::test
