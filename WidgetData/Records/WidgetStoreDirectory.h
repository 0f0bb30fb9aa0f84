// Where the widget files live.
//
// The application and the widget process share one application-group
// container. On Linux it is the directory named by the group identifier in
// the user's data home: $XDG_DATA_HOME/<group>/, or
// $HOME/.local/share/<group>/ when XDG_DATA_HOME is unset, empty or not an
// absolute path (as the XDG base-directory rules say). With neither there is
// no container. An identifier that is not one plain path component (empty,
// ".", "..", or holding "/") names no container either, so that no
// identifier reaches outside the data home.
//
// The widget files are in the directory "widgetData" of the container, each
// named by the raw value of its WidgetType, without an extension.
//
// Nothing here touches the file system: the directories are made by the
// writer when it first writes. The environment is read at each call; call
// from any thread, but not while another thread changes the environment.
#pragma once

#include <optional>
#include <string_view>

#include "Platform/URL/URL.h"

namespace kestrona {

// The container of the application group groupIdentifier, as a directory URL.
std::optional<URL> applicationGroupContainerURL(std::string_view groupIdentifier);

// The directory of the widget files in the container of appGroupIdentifier,
// as a directory URL; none when there is no container.
std::optional<URL> widgetStoreDirectoryUrl(std::string_view appGroupIdentifier);

}  // namespace kestrona
