#pragma once

// What a button of a channel row asks for.
enum class ChannelRowAction
{
    play,
    save,   // a network channel: save to the local links
    edit,   // a saved link
    remove, // a saved link, after confirmation
};
