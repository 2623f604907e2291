# What programs and the session's bus say to each other.
add_fuzz_target(BusConversation KorvaneHosts)
add_fuzz_target(BusFile KorvaneHosts)
add_fuzz_target(BusMessage KorvaneHosts)
add_fuzz_target(BusRule KorvaneHosts)
add_fuzz_target(BusStream KorvaneHosts)
