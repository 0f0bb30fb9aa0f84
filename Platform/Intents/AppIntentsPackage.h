// Intent packages: where a module's intent types are declared to live.
//
// A package is an empty value type naming the packages whose intents it
// includes, as IncludedPackages<...>. The widget process's package includes
// the widget-data package, which includes none of its own. includesPackage
// tells, at compile time, whether one package reaches another.
#pragma once

#include <type_traits>

namespace kestrona {

template <typename... Packages>
struct IncludedPackages {};

template <typename Package>
concept AppIntentsPackage = std::is_empty_v<Package> && requires { typename Package::includedPackages; };

namespace detail {
template <typename Target, typename List>
struct IncludesPackage;
}

// Whether Package is Target or includes it, directly or through others.
template <AppIntentsPackage Package, AppIntentsPackage Target>
inline constexpr bool includesPackage =
    std::is_same_v<Package, Target> || detail::IncludesPackage<Target, typename Package::includedPackages>::value;

namespace detail {
template <typename Target, typename... Packages>
struct IncludesPackage<Target, IncludedPackages<Packages...>>
    : std::bool_constant<(includesPackage<Packages, Target> || ...)> {};
}  // namespace detail

}  // namespace kestrona
