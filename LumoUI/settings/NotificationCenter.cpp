#include "LumoUI/settings/NotificationCenter.h"

namespace lumo {

NotificationCenter::NotificationCenter(QObject* parent) : QObject(parent) {}

void NotificationCenter::post(const QString& name, const QVariant& payload) {
    emit posted(name, payload);
}

QMetaObject::Connection NotificationCenter::observe(const QString& name, QObject* receiver,
                                                    Callback callback) {
    return observe(name, receiver,
                   PayloadCallback([callback = std::move(callback)](const QVariant&) { callback(); }));
}

QMetaObject::Connection NotificationCenter::observe(const QString& name, QObject* receiver,
                                                    PayloadCallback callback) {
    // The receiver is the connection's context, so an observer that goes away is dropped
    // without anyone having to remember its token.
    return connect(
        this, &NotificationCenter::posted, receiver,
        [name, callback = std::move(callback)](const QString& postedName, const QVariant& payload) {
            if (postedName == name)
                callback(payload);
        });
}

void NotificationCenter::remove(const QMetaObject::Connection& connection) {
    QObject::disconnect(connection);
}

} // namespace lumo
