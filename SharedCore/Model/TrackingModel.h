// The application's object model and the classes made for its entities.
//
// The model is the resource "Kestrona.kmodel" (kTrackingModelName). The
// build copies it into "SharedCore.bundle" beside each executable that asks
// for it with kestrona_add_shared_core_bundle(), and the installation puts it
// into "Kestrona.app/Contents/Resources/SharedCore.bundle"; CoreDataStack
// finds it there when it is given no bundle.
//
// registerTrackingModelClasses() tells the store which class to make for
// each entity: Task, Folder, Session, RuleSet, Rule, RuleCombination,
// ALEntry, BrowserALEntry and DocumentAppALEntry (the abstract Node and
// RuleBase have no objects of their own). A context made before the
// registration makes plain managed objects. CoreDataStack calls it when it
// is constructed; a program or test that builds contexts by hand calls it
// first. It may be called any number of times, from any thread.
#pragma once

#include <string_view>

namespace kestrona {

inline constexpr std::string_view kTrackingModelName = "Kestrona";

void registerTrackingModelClasses();

}  // namespace kestrona
