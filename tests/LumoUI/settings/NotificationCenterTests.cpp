#include <gtest/gtest.h>

#include <QStringList>

#include <memory>

#include "LumoUI/settings/NotificationCenter.h"

using namespace lumo;

TEST(NotificationCenter, DeliversByNameUntilTheObserverGoes) {
    NotificationCenter center;
    QStringList seen;
    auto receiver = std::make_unique<QObject>();
    center.observe(notification::undo, receiver.get(), [&] { seen.append("undo"); });
    auto token = center.observe(notification::insertSnippet, receiver.get(),
                                [&](const QVariant& payload) { seen.append(payload.toString()); });

    center.post("lumo.undo");
    center.post("lumo.redo");
    center.post("lumo.insertSnippet", QStringLiteral("sqrt("));
    EXPECT_EQ(seen, QStringList({"undo", "sqrt("}));

    NotificationCenter::remove(token);
    center.post("lumo.insertSnippet", QStringLiteral("x"));
    receiver.reset();
    center.post("lumo.undo");
    EXPECT_EQ(seen, QStringList({"undo", "sqrt("}));
}
