-- Each film with sound is a new stream, and what is kept of a stream would be written to the disk each
-- time. The player's streams need nothing of the sort.
stream_defaults.properties["restore-props"] = false
stream_defaults.properties["restore-target"] = false
