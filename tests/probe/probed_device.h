// A device that has a case for each check of oru-probe, except for most failures.
#pragma once

inline constexpr auto probed_device = R"({
    "system": {"caps": {"flag": true, "long": -5, "narrow": {"uint16": 7}, "pair": [640, 480],
                        "real": 1.5, "text": "12", "wide": 8}},
    "mode": {"info": {}},
    "stream": {"debug": {"b": 1}, "quota": {"hard": 2, "soft": 3}, "limit": {"encoded": 4},
               "all": [{"id": 1, "info": {}, "settings": {"width": 640}, "debug": {}},
                       {"id": 2, "info": {}, "settings": {}, "debug": {}}]},
    "channel": {"info": {"input.count": 1}, "all": [
        {"id": 3, "properties": {"key": "input"}, "info": {"type.id": 1}, "crop": [1, 2, 3, 4],
         "crop_max": [5, 6],
         "resolutions": {"available": [[1920, 1080], [1280, 720], [640, 480], [320, 240]]}},
        {"id": 4, "info": {}, "crop": {"$error": "no crop"}, "crop_max": {"$error": "no most"}}]},
    "input": {"all": [{"id": 1, "info": {"crop.max": [1280, 720]}, "crop": [0, 0, 1280, 720],
                       "resolution_unrotated": {"capture": [1280, 720]}}]},
    "output": {"all": [{"id": 0, "info": {"running": true}, "settings": {"$error": "off"}}]},
    "formats": {"h264": 0, "raw": 3}
})";
