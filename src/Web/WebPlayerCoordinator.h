#pragma once

#include <QString>

#include <optional>

// What one live web view was last told to load: the identity of the content (a YouTube content
// id, or an OK.ru video id), none before the first load. An update with the same identity leaves
// the page playing where it is.
struct WebPlayerCoordinator
{
    std::optional<QString> loadedContentID;
};
