#pragma once

#include <string>

namespace tarnwick::DemoTree {

// Makes a home folder that looks lived in: videos, photos, music, documents, projects with
// their build output and dependencies, caches, a virtual machine and downloads, with dates
// spread over years. Space is reserved without writing data, so it is quick and costs no
// more than it shows. Does nothing when a complete tree is already at root. False with a
// message on standard error when a file cannot be made.
bool make(const std::string& root);

// Desktop entries for the demo's applications, in folder (an "applications" folder of the
// data home), so that the owner colours have apps to name.
bool makeApplications(const std::string& folder);

}
