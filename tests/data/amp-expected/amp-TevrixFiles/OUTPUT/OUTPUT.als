# aliases of the pins: part, pins and their nets
Q_Q1      C=vcc B=bn E=en
Q_Q2      C=vee B=bp E=ep
R_RL      1=out 2=0
