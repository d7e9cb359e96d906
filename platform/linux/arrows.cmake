# Each folder of this backend, and the others that it may include.
set(arrows
    "files:" "queues:" "text:"
    "settings: files"
    "keychain: files queues"
    "http: files queues"
    "ui: queues"
    "desktop: files settings"
    "tools: files settings keychain")
