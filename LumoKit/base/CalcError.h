#pragma once

#include <exception>
#include <utility>
#include <vector>

#include "LumoKit/base/Messages.h"

namespace lumo {

/// The engine's only error: one message from the catalogue, put into words by whoever shows
/// it, in the language of the run.
class CalcError : public std::exception {
public:
    explicit CalcError(Message message) : m_message(std::move(message)) {}
    CalcError(MessageKind kind, std::vector<Message> arguments) : m_message(kind, std::move(arguments)) {}
    explicit CalcError(MessageKind kind) : m_message(kind) {}

    const Message& message() const noexcept { return m_message; }
    MessageKind kind() const noexcept { return m_message.kind(); }
    const char* what() const noexcept override { return "lumo::CalcError"; }

private:
    Message m_message;
};

} // namespace lumo
