#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumo {

/// A language texts are shown in: the interface language setting, resolved.
enum class Language { japanese, english };

/// The interface language setting. Raw values are "system", "japanese" and "english".
enum class AppLanguage { system, japanese, english };

/// Every case, in the order the settings screen offers them.
const std::vector<AppLanguage>& allAppLanguages();
std::string_view rawValue(AppLanguage language);
/// The case for a raw value; nothing for any other text.
std::optional<AppLanguage> appLanguageFromRaw(std::string_view raw);

/// The process-wide language switch. Every bilingual text goes through pick().
struct L10n {

    using PreferredLanguagesProvider = std::function<std::vector<std::string>()>;

    static AppLanguage current();
    static void setCurrent(AppLanguage language);

    /// True when English texts are to be shown. Evaluated anew at every call.
    static bool isEnglish();
    /// The language texts are shown in now: the setting resolved with the preferred languages.
    static Language resolved();

    /// Chooses between a Japanese and an English text by the language in force.
    static std::string pick(std::string_view japanese, std::string_view english);

    /// Whether the given setting resolves to Japanese with the current preferred languages.
    static bool resolvesToJapanese(AppLanguage language);

    /// The user's ordered preferred languages. Defaults to the process locale environment;
    /// the application replaces the provider with its toolkit's list.
    static std::vector<std::string> preferredLanguages();
    static void setPreferredLanguagesProvider(PreferredLanguagesProvider provider);

    /// The default provider: LANGUAGE (colon-separated), then LC_ALL, LC_MESSAGES, LANG;
    /// empty values, "C" and "POSIX" are skipped.
    static std::vector<std::string> localeEnvironmentLanguages();
};

} // namespace lumo
