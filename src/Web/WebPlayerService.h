#pragma once

// The two web video services whose embedded players the model drives by script.
enum class WebPlayerService
{
    youtube,
    okVideo,
};
