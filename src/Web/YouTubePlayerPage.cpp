#include "Web/YouTubePlayerPage.h"

#include "Base/JsonText.h"

using namespace Qt::StringLiterals;

namespace {

QString head(const WebPlayerEndpoints &endpoints)
{
    return uR"(<!DOCTYPE html>
<html>
  <head>
    <meta name="referrer" content="strict-origin-when-cross-origin">
    <meta name="viewport" content="width=device-width,initial-scale=1">
    <style>
      html, body, #player { margin: 0; width: 100%; height: 100%; overflow: hidden; background: #000; }
      iframe { width: 100%; height: 100%; border: 0; }
    </style>
  </head>
  <body>
    <div id="player"></div>
    <script src=")"_s +
           endpoints.youTubeIframeApi.toHtmlEscaped() + uR"("></script>
    <script>
      var player;

      function onYouTubeIframeAPIReady() {
        var playerVars = {
          autoplay: 1,
          controls: 1,
          playsinline: 1,
          rel: 0,
          enablejsapi: 1,
          origin: )"_s +
           YouTubePlayerPage::javascriptString(endpoints.pageOrigin) + uR"(
        };
        var videoID = )"_s;
}

QString tail()
{
    return uR"(;
        if (playlistID) {
          playerVars.listType = 'playlist';
          playerVars.list = playlistID;
        }
        var options = {
          width: '100%',
          height: '100%',
          playerVars: playerVars,
          events: {
            onReady: function (event) { event.target.playVideo(); }
          }
        };
        if (videoID) {
          options.videoId = videoID;
        }
        player = new YT.Player('player', options);
      }

      function velmToggle() {
        if (!player || !player.getPlayerState) { return; }
        if (player.getPlayerState() === YT.PlayerState.PLAYING) {
          player.pauseVideo();
        } else {
          player.playVideo();
        }
      }

      function velmSkip(seconds) {
        if (player && player.getCurrentTime) {
          player.seekTo(Math.max(0, player.getCurrentTime() + seconds), true);
        }
      }

      function velmSetVolume(value) {
        if (player) {
          player.unMute();
          player.setVolume(Math.round(value * 100));
        }
      }

      function velmSetMuted(muted) {
        if (player) {
          if (muted) { player.mute(); } else { player.unMute(); }
        }
      }
    </script>
  </body>
</html>
)"_s;
}

} // namespace

QString YouTubePlayerPage::javascriptString(const std::optional<QString> &value)
{
    if (!value)
        return u"null"_s;
    return QString::fromUtf8(JsonText::quoted(*value));
}

QString YouTubePlayerPage::html(const YouTubeContent &content, const WebPlayerEndpoints &endpoints)
{
    return head(endpoints) + javascriptString(content.videoID()) + u";\n      var playlistID = "_s +
           javascriptString(content.playlistID()) + tail();
}
