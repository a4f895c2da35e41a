"""An endurance test: the real window on a private desktop, used at random while things go wrong around it."""
