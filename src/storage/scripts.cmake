# The pieces of each storage script, in the order in which they are joined.
set(STORAGE_INVENTORY_PIECES
    common.sh smart_status.sh drive_index.sh storcli.sh sas3008.sh onboard.sh inventory.sh)
set(STORAGE_RAID_CARD_PIECES common.sh storcli.sh raid_card.sh)
set(STORAGE_LSI_PIECES common.sh smart_status.sh storcli.sh lsi.sh)
set(STORAGE_RSTE_PIECES common.sh smart_status.sh drive_index.sh rste.sh)
