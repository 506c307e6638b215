#include "LumoKit/base/Language.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace lumo {

const std::vector<AppLanguage>& allAppLanguages() {
    static const std::vector<AppLanguage> all{AppLanguage::system, AppLanguage::japanese,
                                              AppLanguage::english};
    return all;
}

std::string_view rawValue(AppLanguage language) {
    switch (language) {
    case AppLanguage::system:
        return "system";
    case AppLanguage::japanese:
        return "japanese";
    case AppLanguage::english:
        return "english";
    }
    return "system";
}

std::optional<AppLanguage> appLanguageFromRaw(std::string_view raw) {
    for (AppLanguage language : allAppLanguages()) {
        if (rawValue(language) == raw)
            return language;
    }
    return std::nullopt;
}

namespace {

std::atomic<AppLanguage> g_current{AppLanguage::system};

// The provider is replaced rarely (once, at start-up) but read on every message.
std::mutex g_providerMutex;
L10n::PreferredLanguagesProvider g_provider;

bool startsWithJa(const std::vector<std::string>& languages) {
    return !languages.empty() && languages.front().rfind("ja", 0) == 0;
}

} // namespace

AppLanguage L10n::current() {
    return g_current.load(std::memory_order_relaxed);
}

void L10n::setCurrent(AppLanguage language) {
    g_current.store(language, std::memory_order_relaxed);
}

bool L10n::resolvesToJapanese(AppLanguage language) {
    switch (language) {
    case AppLanguage::japanese:
        return true;
    case AppLanguage::english:
        return false;
    case AppLanguage::system:
        return startsWithJa(preferredLanguages());
    }
    return false;
}

bool L10n::isEnglish() {
    return !resolvesToJapanese(current());
}

Language L10n::resolved() {
    return isEnglish() ? Language::english : Language::japanese;
}

std::string L10n::pick(std::string_view japanese, std::string_view english) {
    return std::string(isEnglish() ? english : japanese);
}

std::vector<std::string> L10n::preferredLanguages() {
    PreferredLanguagesProvider provider;
    {
        std::lock_guard lock(g_providerMutex);
        provider = g_provider;
    }
    return provider ? provider() : localeEnvironmentLanguages();
}

void L10n::setPreferredLanguagesProvider(PreferredLanguagesProvider provider) {
    std::lock_guard lock(g_providerMutex);
    g_provider = std::move(provider);
}

std::vector<std::string> L10n::localeEnvironmentLanguages() {
    auto usable = [](std::string_view value) { return !value.empty() && value != "C" && value != "POSIX"; };
    std::vector<std::string> result;
    if (const char* language = std::getenv("LANGUAGE")) {
        std::string_view list(language);
        while (!list.empty()) {
            auto colon = list.find(':');
            auto entry = list.substr(0, colon);
            if (usable(entry))
                result.emplace_back(entry);
            if (colon == std::string_view::npos)
                break;
            list.remove_prefix(colon + 1);
        }
    }
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (const char* value = std::getenv(name); value && usable(value))
            result.emplace_back(value);
    }
    return result;
}

} // namespace lumo
